#include "DesktopChoice.h"

#include "StatusReport.h"
#include "WaylandEventLoop.h"
#include "WaylandSurvey.h"

#include <QLoggingCategory>

#include <array>
#include <chrono>
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

// For an X server. A compositor starts its own on demand, which takes a second or two; without one
// there is nothing else to be done than to wait.
constexpr auto timeoutBesideACompositor = std::chrono::seconds(5);
constexpr auto timeout = std::chrono::seconds(30);

/// Of use where the toolkit can be had with it.
constexpr auto layerShell = "zwlr_layer_shell_v1";
constexpr bool isLayerShellUsed = TESSLY_LAYER_SHELL;

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
    const bool hasXServer = findings.xServer == XServerProbe::Outcome::answers;
    if (!findings.compositor) {
        return hasXServer ? std::optional(DesktopChoice{.kind = Kind::x11, .protocols = {u"X11"_s}})
                          : std::nullopt;
    }
    const QStringList clipboard = found(dataControls, *findings.compositor);
    QStringList others = found(otherInterfaces, *findings.compositor);
    const bool hasLayerShell = isLayerShellUsed && findings.compositor->contains(layerShell);
    if (!clipboard.isEmpty()) {
        if (hasLayerShell) {
            others.append(QString::fromLatin1(layerShell));
        }
        return DesktopChoice{
            .kind = Kind::wayland, .hasLayerShell = hasLayerShell, .protocols = clipboard + others};
    }
    if (hasXServer) {
        return DesktopChoice{
            .kind = Kind::xwayland,
            .protocols = QStringList(u"XWayland"_s) + others,
            .remark = u"This Wayland compositor has no data control: Tessly runs on XWayland and "
                      "records what the compositor mirrors there."_s};
    }
    if (findings.xServer == XServerProbe::Outcome::silent) {
        return DesktopChoice{
            .kind = Kind::wayland,
            .hasClipboard = false,
            .protocols = QStringList(u"XWayland (does not answer yet)"_s) + others,
            .remark = u"XWayland does not answer: Tessly cannot read or write the clipboard until "
                      "it does."_s};
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
    std::shared_ptr<XServerProbe> probe;
    if (!findings.compositor || found(dataControls, *findings.compositor).isEmpty()) {
        probe = std::make_shared<XServerProbe>();
        findings.xServer = probe->wait(findings.compositor ? timeoutBesideACompositor : timeout);
    }
    auto choice = desktopChoice(findings);
    const bool isSilent = findings.xServer == XServerProbe::Outcome::silent;
    if (!choice) {
        throw std::runtime_error(
            isSilent ? "The X server does not answer." : "Could not connect to the X server.");
    }
    if (isSilent) {
        choice->awaited = std::move(probe);
    }
    if (!choice->remark.isEmpty()) {
        qCInfo(lcDesktop).noquote() << choice->remark;
    }
    return *choice;
}

} // namespace tessly
