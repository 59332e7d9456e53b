#include "DesktopChoice.h"

#include "StatusReport.h"
#include "WaylandEventLoop.h"
#include "WaylandSurvey.h"
#include "X11EventLoop.h"

#include <QLoggingCategory>

#include <array>
#include <exception>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

Q_LOGGING_CATEGORY(lcDesktop, "com.brackmoor.tessly.Desktop")

constexpr std::array dataControls = {
    "ext_data_control_manager_v1",
    "zwlr_data_control_manager_v1",
};

constexpr std::array otherInterfaces = {
    "zwlr_foreign_toplevel_manager_v1",
    "org_kde_plasma_window_management",
    "zwp_virtual_keyboard_manager_v1",
    "org_kde_kwin_fake_input",
    "org_kde_kwin_keystate",
};

template <std::size_t count>
QStringList found(const std::array<const char*, count>& names, const std::set<std::string>& all)
{
    QStringList found;
    for (const char* const name : names) {
        if (all.contains(name)) {
            found.append(QString::fromLatin1(name));
        }
    }
    return found;
}

} // namespace

QByteArray DesktopChoice::toolkitPlatform() const
{
    return kind == Kind::wayland ? "wayland" : "xcb";
}

std::optional<DesktopChoice> desktopChoice(const DesktopFindings& findings)
{
    using Kind = DesktopChoice::Kind;
    if (!findings.compositor) {
        return findings.hasXServer
                   ? std::optional(DesktopChoice{.kind = Kind::x11, .protocols = {u"X11"_s}})
                   : std::nullopt;
    }
    const QStringList clipboard = found(dataControls, *findings.compositor);
    const QStringList others = found(otherInterfaces, *findings.compositor);
    if (!clipboard.isEmpty()) {
        return DesktopChoice{.kind = Kind::wayland, .protocols = clipboard + others};
    }
    if (findings.hasXServer) {
        return DesktopChoice{
            .kind = Kind::xwayland,
            .protocols = QStringList(u"XWayland"_s) + others,
            .remark = u"This Wayland compositor has no data control: Tessly runs on XWayland and "
                      "records what the compositor mirrors there."_s};
    }
    return DesktopChoice{
        .kind = Kind::wayland,
        .hasClipboard = false,
        .protocols = others,
        .remark = u"This Wayland compositor has neither data control nor XWayland: Tessly cannot "
                  "read or write the clipboard here."_s};
}

DesktopChoice chooseDesktop()
{
    DesktopFindings findings;
    if (sessionType() == u"wayland"_s) {
        try {
            findings.compositor = compositorInterfaces();
        } catch (const WaylandError& error) {
            qCWarning(lcDesktop) << error.what();
        }
    }
    std::exception_ptr noXServer;
    if (!findings.compositor || found(dataControls, *findings.compositor).isEmpty()) {
        try {
            const X11EventLoop connection;
            findings.hasXServer = true;
        } catch (const std::runtime_error&) {
            noXServer = std::current_exception();
        }
    }
    const auto choice = desktopChoice(findings);
    if (!choice) {
        std::rethrow_exception(noXServer);
    }
    if (!choice->remark.isEmpty()) {
        qCInfo(lcDesktop).noquote() << choice->remark;
    }
    return *choice;
}

} // namespace tessly
