#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace tessly::test {

/// An X server of a test's own (Xvfb on a free display), with openbox where asked for. Everything
/// that was started ends with it. Fails by throwing std::runtime_error with what was missing.
class XSession
{
public:
    enum class WindowManager { none, openbox };

    /// `screen` is width, height and depth.
    explicit XSession(
        WindowManager windowManager = WindowManager::openbox,
        const QString& screen = QStringLiteral("1280x800x24"));
    ~XSession();
    XSession(const XSession&) = delete;
    XSession& operator=(const XSession&) = delete;

    /// As $DISPLAY names it, ":7".
    [[nodiscard]] const QString& display() const { return m_display; }

    /// A program on this display, not yet started. Its standard error goes to the test's.
    [[nodiscard]] std::unique_ptr<QProcess>
    program(const QString& name, const QStringList& arguments) const;

    /// Starts a program and returns it once it runs. It is killed when the returned object goes.
    [[nodiscard]] std::unique_ptr<QProcess>
    start(const QString& name, const QStringList& arguments) const;

    /// Runs a program to its end and returns what it printed; throws if it fails.
    QByteArray
    run(const QString& name, const QStringList& arguments, const QByteArray& input = {}) const;

    /// Starts openbox and returns it once it manages windows; for sessions that began without.
    [[nodiscard]] std::unique_ptr<QProcess> startOpenbox() const;

    /// The X server, to be frozen.
    [[nodiscard]] const QProcess& server() const { return *m_server; }

    /// The window manager, which there must be.
    [[nodiscard]] const QProcess& windowManager() const { return *m_windowManager; }

    /// Ends the X server, as a crash would.
    void killServer();

private:
    QTemporaryDir m_home;
    QString m_display;
    std::unique_ptr<QProcess> m_server;
    std::unique_ptr<QProcess> m_windowManager;
};

} // namespace tessly::test
