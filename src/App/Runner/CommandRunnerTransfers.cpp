// Exporting and importing.

#include "AppPaths.h"
#include "BusTypes.h"
#include "ClipDatabase.h"
#include "ClosedHistory.h"
#include "CommandRunner.h"
#include "ExportFormat.h"
#include "FileError.h"
#include "HistoryImport.h"
#include "InstanceLock.h"
#include "PrivateFiles.h"
#include "ReplacementFile.h"
#include "SealedMemory.h"
#include "SystemClock.h"
#include "TerminalText.h"

#include <QDBusArgument>
#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace tessly {

namespace {

const QByteArray standardStream = QByteArrayLiteral("-");

/// Gathers what is written in small pieces.
class Gathering
{
public:
    explicit Gathering(ExportFormat::Sink sink)
        : m_sink(std::move(sink))
    {
    }

    void write(QByteArrayView bytes)
    {
        m_bytes.append(bytes);
        if (m_bytes.size() >= enough) {
            flush();
        }
    }
    void flush()
    {
        m_sink(m_bytes);
        m_bytes.truncate(0);
    }

private:
    static constexpr qsizetype enough = qsizetype(256) * 1024;

    ExportFormat::Sink m_sink;
    QByteArray m_bytes;
};

/// Printing failed.
struct NotPrinted
{
    /// As of errno.
    int reason;
};

/// A descriptor that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
    }
    ~Descriptor()
    {
        if (m_number >= 0) {
            ::close(m_number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number;
};

/// The history of a program that does not run, with the right to write it.
struct OwnHistory
{
    std::unique_ptr<InstanceLock> lock;
    std::unique_ptr<ClipDatabase> database;
};

bool isWithin(const QString& path, const QString& folder)
{
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    return !canonical.isEmpty() && path.startsWith(canonical + u'/');
}

} // namespace

int CommandRunner::exportHistory(const QByteArray& file)
{
    if (reach(m_client.limits().look) == Reach::running) {
        // It answers the list once what was copied by now has been handed to the history, and the
        // import of nothing once that is open and has all that waited for it.
        const QDBusMessage answer = m_client.call(
            u"List"_s, {QString(), QString(), qlonglong(0)}, m_client.limits().answer);
        if (answer.type() != QDBusMessage::ReplyMessage) {
            return complainOfAnswer(answer);
        }
        int status = EXIT_SUCCESS;
        if (!addByProgram({}, status)) {
            return status;
        }
    }
    if (AppPaths::unfinishedRecovery(m_dataFolder)) {
        return complain(
            exitFailed, u"A damaged history is still being brought over; export it then."_s);
    }
    if (file == standardStream) {
        try {
            return exportTo(
                       QFile::decodeName(file),
                       [this](QByteArrayView bytes) {
                           if (!m_output.print(bytes.toByteArray())) {
                               throw NotPrinted{errno};
                           }
                       })
                .value_or(exitFailed);
        } catch (const NotPrinted& failure) {
            return complainOfPrinting(failure.reason);
        }
    }
    try {
        ReplacementFile replacement(file);
        if (isWithin(replacement.path(), m_dataFolder)) {
            throw FileError(
                u"write"_s, replacement.path(), u"is in the folder of the history itself"_s);
        }
        const std::optional<int> status =
            exportTo(QFile::decodeName(file), [&replacement](QByteArrayView bytes) {
                replacement.write(bytes);
            });
        if (status) {
            replacement.commit();
        }
        return status.value_or(exitFailed);
    } catch (const FileError& error) {
        return complain(exitFailed, error.description());
    }
}

/// The exit status; none if the history could not be read to its end. What is damaged in it is left
/// out and said. Throws what the sink throws.
std::optional<int>
CommandRunner::exportTo(const QString& name, const std::function<void(QByteArrayView)>& sink)
{
    int status = EXIT_SUCCESS;
    Gathering gathering(sink);
    const auto write = [&gathering](QByteArrayView bytes) { gathering.write(bytes); };
    try {
        write(ExportFormat::firstLine());
        ClosedHistory::forEach(
            m_databasePath, [&write](const Clip& clip) { ExportFormat::write(clip, write); },
            [&](qint64 position, const QString& reason) {
                status = exitFailed;
                m_output.remark(terminalLine(
                    u"%1: entry %2 is left out: %3"_s.arg(name).arg(position).arg(reason)));
            });
    } catch (const ClipStoreError& error) {
        complain(exitFailed, error.description());
        return std::nullopt;
    }
    write(ExportFormat::lastLine());
    gathering.flush();
    return status;
}

int CommandRunner::importHistory(const Invocation& invocation)
{
    const QString name = QFile::decodeName(invocation.file);
    const Content content = invocation.isNullSeparated ? Content::texts : Content::exported;
    if (invocation.file == standardStream) {
        return importFrom(m_output.input, name, content);
    }
    const Descriptor descriptor(::open(invocation.file.constData(), O_RDONLY | O_CLOEXEC));
    if (descriptor.number() < 0) {
        return complain(exitFailed, FileError(u"read"_s, name, std::errc(errno)).description());
    }
    return importFrom(descriptor.number(), name, content);
}

double CommandRunner::timeOfTexts() const
{
    double oldest = SystemClock().now();
    for (const ClipSummary& entry : ClosedHistory::summaries(m_databasePath, {}, {}, -1)) {
        oldest = std::min(oldest, entry.lastUsedAt);
    }
    return std::max(oldest - 1, 0.0);
}

int CommandRunner::importFrom(int descriptor, const QString& name, Content content)
{
    const bool isTexts = content == Content::texts;
    LineReader lines(
        descriptor, name, isTexts ? ExportFormat::largestContent : ExportFormat::longestLine,
        isTexts ? '\0' : '\n');
    int status = EXIT_SUCCESS;
    Add add;
    HistoryImport import(
        lines,
        [&](const QByteArray& batch) -> std::optional<ImportOutcome> {
            // Not for a file in which there is nothing to import.
            if (!add) {
                add = makeAdd(status);
            }
            return add ? add(batch) : std::nullopt;
        },
        [&](qint64 line, const QString& reason) {
            const QString place = line > 0 ? name + u':' + QString::number(line) : name;
            m_output.remark(terminalLine(place + u": "_s + reason));
        });
    try {
        if (isTexts) {
            import.runOfTexts(timeOfTexts());
        } else {
            import.run();
        }
    } catch (const ClipStoreError& error) {
        status = complain(exitFailed, error.description());
    } catch (const FileError& error) {
        status = complain(exitFailed, error.description());
    }
    const HistoryImport::Result& result = import.result();
    const int printed = print(u"%1 added, %2 there already, %3 refused\n"_s.arg(result.added)
                                  .arg(result.present)
                                  .arg(result.refused)
                                  .toUtf8());
    if (status == EXIT_SUCCESS && (result.refused > 0 || !result.isComplete)) {
        status = exitFailed;
    }
    return status == EXIT_SUCCESS ? printed : status;
}

CommandRunner::Add CommandRunner::makeAdd(int& status)
{
    for (;;) {
        switch (reach(m_client.limits().start)) {
        case Reach::running:
            return [this, &status](const QByteArray& lines) { return addByProgram(lines, status); };
        case Reach::unreachable:
            status = complainOfReach();
            return {};
        case Reach::notRunning:
            break;
        }
        // None where the program has started just now.
        bool isTaken = false;
        Add add = makeAddHere(status, isTaken);
        if (!isTaken) {
            return add;
        }
    }
}

CommandRunner::Add CommandRunner::makeAddHere(int& status, bool& isTaken)
{
    const auto history = std::make_shared<OwnHistory>();
    try {
        preparePrivateFolder(m_dataFolder, Parents::create);
        history->lock = InstanceLock::acquire(m_dataFolder);
        if (!history->lock) {
            isTaken = true;
            return {};
        }
        history->database =
            std::make_unique<ClipDatabase>(m_databasePath, [] { return SystemClock().now(); });
    } catch (const FileError& error) {
        status = complain(exitFailed, error.description());
        return {};
    } catch (const ClipStoreError& error) {
        status = complain(exitFailed, error.description());
        return {};
    }
    return [this, &status, history,
            maximum = m_maximumHistory()](const QByteArray& lines) -> std::optional<ImportOutcome> {
        try {
            return history->database->importLines(lines, maximum);
        } catch (const ClipStoreError& error) {
            status = complain(exitFailed, error.description());
            return std::nullopt;
        }
    };
}

std::optional<ImportOutcome> CommandRunner::addByProgram(const QByteArray& lines, int& status)
{
    QDBusUnixFileDescriptor descriptor;
    try {
        descriptor.giveFileDescriptor(SealedMemory::make(lines));
    } catch (const std::system_error& error) {
        status = complain(exitFailed, QString::fromUtf8(error.what()));
        return std::nullopt;
    }
    const QDBusMessage answer =
        m_client.call(u"Import"_s, {QVariant::fromValue(descriptor)}, m_client.limits().change);
    if (answer.type() != QDBusMessage::ReplyMessage) {
        status = complainOfAnswer(answer);
        return std::nullopt;
    }
    auto outcome =
        importOutcome(qdbus_cast<QVariantMap>(answer.arguments().value(0)), lines.count('\n'));
    if (!outcome) {
        status = complain(exitFailed, u"Tessly's answer makes no sense"_s);
    }
    return outcome;
}

} // namespace tessly
