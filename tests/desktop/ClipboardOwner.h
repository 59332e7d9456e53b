#pragma once

#include "XSession.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QProcess>
#include <QStringList>

#include <memory>

namespace tessly::test {

/// Another program that owns a selection: owner.py, and what its command line can make of it.
class ClipboardOwner
{
public:
    /// Starts it and returns once it owns the selection. Throws std::runtime_error if it does not.
    ClipboardOwner(const XSession& session, const QStringList& arguments);
    ~ClipboardOwner();
    ClipboardOwner(const ClipboardOwner&) = delete;
    ClipboardOwner& operator=(const ClipboardOwner&) = delete;

    /// Gives it one of its commands.
    void command(const QByteArray& line);
    /// Has it end by itself, as a program that is closed, and waits until it has.
    void leave();
    /// Waits until it has ended by itself.
    [[nodiscard]] bool waitUntilGone();
    /// Makes it hang, as a program that was stopped, and go on again.
    void hang();
    void goOn();

    /// Waits for a line that it prints.
    [[nodiscard]] bool waitForLine(const QByteArray& line);
    /// What it has printed so far.
    [[nodiscard]] const QByteArrayList& lines();
    /// How often a target was asked for so far.
    [[nodiscard]] qsizetype requests(const QByteArray& target);

private:
    std::unique_ptr<QProcess> m_process;
    QByteArray m_unfinishedLine;
    QByteArrayList m_lines;
};

/// The path of a script in tests/desktop.
[[nodiscard]] QString desktopScript(const QString& name);

} // namespace tessly::test
