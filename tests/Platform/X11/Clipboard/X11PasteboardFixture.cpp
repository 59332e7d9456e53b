#include "X11PasteboardFixture.h"

#include <QCryptographicHash>

using namespace Qt::StringLiterals;

namespace tessly::test {

X11ClipboardDeadlines X11PasteboardTest::shortDeadlines()
{
    using std::chrono::milliseconds;
    return {
        .targets = milliseconds(1000),
        .stall = milliseconds(1000),
        .read = milliseconds(2500),
        .drain = milliseconds(2500),
        .reader = milliseconds(1000)};
}

X11PasteboardTest::X11PasteboardTest()
{
    usePasteboard(X11ClipboardDeadlines());
}

void X11PasteboardTest::usePasteboard(const X11ClipboardDeadlines& deadlines)
{
    m_pasteboard = std::make_unique<X11Pasteboard>(X11Pasteboard::Options{
        .display = m_session.display().toStdString(), .deadlines = deadlines});
}

qint64 X11PasteboardTest::copied(const QStringList& arguments)
{
    return changed([&] {
        auto next = std::make_unique<ClipboardOwner>(m_session, arguments);
        m_owner = std::move(next);
    });
}

ReadResult<QByteArray> X11PasteboardTest::read(qint64 count, Flavour flavour, qint64 byteLimit)
{
    return await(pasteboard().read(count, flavour, byteLimit));
}

std::optional<QSet<QString>> X11PasteboardTest::types(qint64 count)
{
    return await(pasteboard().types(count));
}

ReadResult<QByteArrayList> X11PasteboardTest::readFiles(qint64 count)
{
    return await(pasteboard().readFileURLs(count, noLimit));
}

qint64 X11PasteboardTest::written(const PasteboardItem& item)
{
    return changed([&] { EXPECT_TRUE(m_ticket = pasteboard().write({item})); });
}

std::optional<QByteArray> X11PasteboardTest::xclip(const QString& target, const QString& selection)
{
    const auto process =
        m_session.program(u"xclip"_s, {u"-o"_s, u"-selection"_s, selection, u"-t"_s, target});
    // It complains where nothing is offered, which is what some tests are about.
    process->setProcessChannelMode(QProcess::SeparateChannels);
    process->start();
    if (!waitUntil([&] { return process->state() == QProcess::NotRunning; }) ||
        process->exitCode() != 0) {
        return std::nullopt;
    }
    return process->readAllStandardOutput();
}

QByteArrayList X11PasteboardTest::reader(const QStringList& arguments)
{
    const auto process = m_session.start(
        u"/usr/bin/python3"_s, QStringList{desktopScript(u"reader.py"_s)} + arguments);
    EXPECT_TRUE(waitUntil(
        [&] { return process->state() == QProcess::NotRunning; }, std::chrono::seconds(30)));
    EXPECT_EQ(process->exitCode(), 0);
    return process->readAllStandardOutput().trimmed().split('\n');
}

void X11PasteboardTest::expectThatTheNextCopyIsRead()
{
    const qint64 next = copied({u"--text"_s, u"the next copy"_s});
    const auto offered = types(next);
    ASSERT_TRUE(offered);
    EXPECT_TRUE(offered->contains(u"UTF8_STRING"_s));
    const auto text = read(next, Flavour::plainText);
    EXPECT_EQ(text.status, ReadStatus::read);
    EXPECT_EQ(text.value, "the next copy");
}

QByteArray filling(qsizetype size)
{
    return QByteArray("0123456789abcdef").repeated(size / 16 + 1).first(size);
}

QByteArray
readerLine(const QByteArray& target, const QByteArray& type, int format, const QByteArray& value)
{
    return target + ' ' + type + ' ' + QByteArray::number(format) + ' ' +
           QByteArray::number(value.size()) + ' ' +
           QCryptographicHash::hash(value, QCryptographicHash::Sha256).toHex();
}

} // namespace tessly::test
