#include "ClipboardOwner.h"

#include "FrozenProcess.h"
#include "TestSupport.h"

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace tessly::test {

QString desktopScript(const QString& name)
{
    return QStringLiteral(TESSLY_DESKTOP_SCRIPTS "/") + name;
}

ClipboardOwner::ClipboardOwner(const XSession& session, const QStringList& arguments)
    : m_process(session.start(
          u"/usr/bin/python3"_s, QStringList{desktopScript(u"owner.py"_s)} + arguments))
{
    if (!waitForLine("owns"_ba)) {
        throw std::runtime_error("owner.py does not own the selection");
    }
}

ClipboardOwner::~ClipboardOwner()
{
    m_process->kill();
    m_process->waitForFinished(5000);
}

void ClipboardOwner::command(const QByteArray& line)
{
    m_process->write(line + '\n');
}

void ClipboardOwner::leave()
{
    if (m_process->state() == QProcess::Running) {
        command("quit"_ba);
    }
    if (!waitUntilGone()) {
        throw std::runtime_error("owner.py does not end");
    }
}

bool ClipboardOwner::waitUntilGone()
{
    return waitUntil([this] { return m_process->state() == QProcess::NotRunning; });
}

void ClipboardOwner::hang()
{
    freeze(*m_process);
}

void ClipboardOwner::goOn()
{
    thaw(*m_process);
}

bool ClipboardOwner::waitForLine(const QByteArray& line)
{
    return waitUntil([this, &line] { return lines().contains(line); });
}

const QByteArrayList& ClipboardOwner::lines()
{
    m_unfinishedLine += m_process->readAllStandardOutput();
    QByteArrayList parts = m_unfinishedLine.split('\n');
    m_unfinishedLine = parts.takeLast();
    m_lines += parts;
    return m_lines;
}

qsizetype ClipboardOwner::requests(const QByteArray& target)
{
    return lines().count("request " + target);
}

} // namespace tessly::test
