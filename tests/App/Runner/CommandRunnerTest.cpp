#include "CommandRunner.h"

#include "AppPaths.h"

#include "BusNames.h"
#include "ClipDatabase.h"
#include "InstanceLock.h"
#include "PlantedFile.h"
#include "TestBus.h"
#include "TestSupport.h"

#include <gmock/gmock.h>

#include <QDBusArgument>
#include <QDBusVirtualObject>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <cerrno>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace tessly::test {
namespace {

/// Hears what is asked of an object.
class Listener final : public QDBusVirtualObject
{
public:
    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*bus*/) override
    {
        calls.push_back(message);
        return true;
    }

    std::vector<QDBusMessage> calls;
};

/// Commands in a data folder of the test's own, on whatever bus the test says.
class CommandRunnerTest : public testing::Test
{
protected:
    void fill()
    {
        ClipDatabase database(m_databasePath, [this] { return m_now++; });
        for (const char* text : {"three", "two", "one"}) {
            database.save(ClipPayload({.plainText = text}), {}, {}, 500);
        }
    }

    int run(const Invocation& invocation)
    {
        BusClient client(
            m_connect, {.bus = m_busLimit,
                        .start = m_startLimit,
                        .look = 50ms,
                        .answer = 50ms,
                        .change = 50ms});
        m_printed.clear();
        m_complaints.clear();
        m_remarks.clear();
        CommandRunner runner(
            m_folder.path(), client,
            {.print =
                 [this](const QByteArray& text) {
                     m_printed += text;
                     errno = m_printError;
                     return m_printError == 0;
                 },
             .complain =
                 [this](const QString& line) { m_complaints.push_back(line.toStdString()); },
             .columns = std::nullopt,
             .remark = [this](const QString& line) { m_remarks.push_back(line.toStdString()); },
             .input = m_input},
            [this] { return m_maximumHistory; });
        m_bus = client.bus();
        const auto status = m_startsSecond ? runner.showRunningInstance() : runner.run(invocation);
        m_bus = client.bus();
        return status.value_or(-1);
    }
    int run(CommandID command)
    {
        return run(Invocation{
            .verb = Invocation::Verb::command, .command = command, .position = 1, .isJSON = true});
    }
    QJsonArray listed()
    {
        EXPECT_EQ(run(CommandID::list), 0);
        EXPECT_THAT(m_complaints, IsEmpty());
        return QJsonDocument::fromJson(m_printed).array();
    }
    int run(CommandID command, const QString& file)
    {
        return run(Invocation{
            .verb = Invocation::Verb::command,
            .command = command,
            .file = QFile::encodeName(file)});
    }
    int exportTo(const QString& file) { return run(CommandID::exportHistory, file); }
    int importFrom(const QString& file) { return run(CommandID::importHistory, file); }
    int importTextsFrom(const QString& file)
    {
        return run(Invocation{
            .verb = Invocation::Verb::command,
            .command = CommandID::importHistory,
            .file = QFile::encodeName(file),
            .isNullSeparated = true});
    }
    static QByteArray contents(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("absent");
    }
    static void put(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QJsonObject status()
    {
        EXPECT_EQ(run(CommandID::status), 0);
        EXPECT_THAT(m_complaints, IsEmpty());
        return QJsonDocument::fromJson(m_printed).object();
    }

    QTemporaryDir m_folder;
    QString m_databasePath = m_folder.filePath(u"history.sqlite"_s);
    double m_now = 1'700'000'000;
    BusClient::Connect m_connect = [] { return TestBus::connect(u"unix:path=/nonexistent/bus"_s); };
    std::chrono::milliseconds m_busLimit = 5s;
    std::chrono::milliseconds m_startLimit = 50ms;
    bool m_startsSecond = false;
    int m_printError = 0;
    QByteArray m_printed;
    std::vector<std::string> m_complaints;
    std::vector<std::string> m_remarks;
    int m_input = -1;
    qint64 m_maximumHistory = 500;
    BusClient::Bus m_bus = BusClient::Bus::present;
};

constexpr std::array actions = {CommandID::show,  CommandID::hide,        CommandID::toggle,
                                CommandID::pause, CommandID::resume,      CommandID::quit,
                                CommandID::paste, CommandID::copy,        CommandID::pin,
                                CommandID::unpin, CommandID::deleteEntry, CommandID::clear};

TEST_F(CommandRunnerTest, WhatNeedsTheProgramSaysThatItDoesNotRun)
{
    TestBus bus;
    for (const bool hasBus : {false, true}) {
        if (hasBus) {
            m_connect = [&] { return bus.connect(); };
        }
        for (const CommandID action : actions) {
            EXPECT_EQ(run(action), exitNotRunning);
            EXPECT_THAT(m_complaints, ElementsAre("Tessly is not running"));
            EXPECT_EQ(m_printed, "");
        }
    }
}

TEST_F(CommandRunnerTest, ListsTheHistoryOfAProgramThatDoesNotRun)
{
    fill();
    const QJsonArray list = listed();
    ASSERT_EQ(list.size(), 3);
    EXPECT_EQ(list[0].toObject()[u"preview"_s], u"one"_s);
    EXPECT_EQ(list[2].toObject()[u"preview"_s], u"three"_s);
    Invocation search{.verb = Invocation::Verb::command, .command = CommandID::list};
    search.query = u"tw"_s;
    EXPECT_EQ(run(search), 0);
    EXPECT_THAT(m_printed.toStdString(), HasSubstr("two"));
    EXPECT_EQ(m_printed.count('\n'), 1);
    EXPECT_TRUE(m_printed.startsWith("2 ")) << "its position in the whole history";
}

TEST_F(CommandRunnerTest, TellsTheStatusOfAProgramThatDoesNotRun)
{
    fill();
    const QJsonObject report = status();
    EXPECT_EQ(report[u"running"_s], false);
    EXPECT_EQ(report[u"items"_s], 3);
    EXPECT_EQ(report[u"pinned"_s], 0);
    EXPECT_GT(report[u"bytes"_s].toDouble(), 0);
    for (const QString& key : {u"paused"_s, u"capture"_s, u"paste"_s, u"hotKeys"_s, u"tray"_s}) {
        EXPECT_EQ(report[key], false) << key.toStdString();
    }
    EXPECT_TRUE(report[u"session"_s] == u"x11"_s || report[u"session"_s] == u"wayland"_s);
}

TEST_F(CommandRunnerTest, AHistoryThatIsNotThereIsEmpty)
{
    EXPECT_TRUE(listed().isEmpty());
    EXPECT_EQ(status()[u"items"_s], 0);
    EXPECT_THAT(QDir(m_folder.path()).entryList(QDir::Files), IsEmpty());
}

TEST_F(CommandRunnerTest, ADamagedHistoryIsAnErrorAndStaysAsItIs)
{
    QFile file(m_databasePath);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QByteArray garbage(8192, 'x');
    file.write(garbage);
    file.close();
    for (const CommandID command : {CommandID::list, CommandID::status}) {
        EXPECT_EQ(run(command), exitFailed);
        EXPECT_THAT(
            m_complaints,
            ElementsAre("Clipboard database integrity check failed: file is not a database"));
        EXPECT_EQ(m_printed, "");
    }
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), garbage);
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files).size(), 1);
}

TEST_F(CommandRunnerTest, WhatIsPlantedInThePlaceOfTheHistoryIsAnErrorAndHoldsNobodyUp)
{
    for (const Planted what : {Planted::pipe, Planted::link, Planted::linkToNothing}) {
        const PlantedFile planted(what, m_databasePath, m_folder.filePath(u"victim"_s));
        const PlantedFile lock(
            Planted::pipe, m_folder.filePath(u"tessly.lock"_s), m_folder.filePath(u"other"_s));
        for (const CommandID command : {CommandID::list, CommandID::status}) {
            EXPECT_EQ(run(command), exitFailed);
            ASSERT_THAT(m_complaints, SizeIs(1));
            EXPECT_THAT(m_complaints[0], HasSubstr(m_databasePath.toStdString()));
            EXPECT_THAT(m_complaints[0], HasSubstr(planted.reason().toStdString()));
            EXPECT_EQ(m_printed, "");
        }
        planted.expectUntouched();
        for (const QFileInfo& file :
             QDir(m_folder.path()).entryInfoList(QDir::AllEntries | QDir::System)) {
            QFile::remove(file.filePath());
        }
    }
}

TEST_F(CommandRunnerTest, WithoutABusARunningProgramIsSaidToBeOutOfReach)
{
    fill();
    const auto lock = InstanceLock::acquire(m_folder.path());
    const auto outOfReach =
        testing::ElementsAre("Tessly is running, but there is no session bus on which to reach it");
    for (const CommandID action : actions) {
        EXPECT_EQ(run(action), exitFailed);
        EXPECT_THAT(m_complaints, outOfReach);
    }
    EXPECT_EQ(run(CommandID::status), exitFailed);
    EXPECT_THAT(m_complaints, outOfReach);
    EXPECT_EQ(listed().size(), 3) << "the files can be read all the same";
    m_startsSecond = true;
    EXPECT_EQ(run({}), exitFailed);
    EXPECT_THAT(m_complaints, outOfReach);
}

TEST_F(CommandRunnerTest, AProgramThatIsNotOnThisBusIsSaidToBeOutOfReach)
{
    TestBus bus;
    m_connect = [&] { return bus.connect(); };
    const auto lock = InstanceLock::acquire(m_folder.path());
    EXPECT_EQ(run(CommandID::show), exitFailed);
    EXPECT_THAT(
        m_complaints, ElementsAre("Tessly is running, but cannot be reached on the session bus"));
}

TEST_F(CommandRunnerTest, ListingDoesNotWaitLongForAProgramThatIsNotOnThisBus)
{
    fill();
    TestBus bus;
    m_connect = [&] { return bus.connect(); };
    m_startLimit = 1h;
    const auto lock = InstanceLock::acquire(m_folder.path());
    EXPECT_EQ(listed().size(), 3);
}

TEST_F(CommandRunnerTest, ABusThatIsSilentIsGivenUp)
{
    TestBus bus;
    bus.suspend();
    m_connect = [address = bus.address()] { return TestBus::connect(address); };
    m_busLimit = 50ms;
    const auto lock = InstanceLock::acquire(m_folder.path());
    EXPECT_EQ(run(CommandID::show), exitFailed);
    EXPECT_THAT(m_complaints, ElementsAre("the session bus does not answer"));
    EXPECT_EQ(m_bus, BusClient::Bus::silent);
    bus.resume();
}

TEST_F(CommandRunnerTest, AProgramThatDoesNotAnswerIsGivenUp)
{
    TestBus bus;
    QDBusConnection other = bus.connect();
    // Has the name, and nobody who looks after it: this thread waits for the command.
    ASSERT_TRUE(other.registerService(busName));
    QObject object;
    ASSERT_TRUE(other.registerObject(busPath, &object, QDBusConnection::ExportAllSlots));
    m_connect = [&] { return bus.connect(); };
    for (const CommandID command : {CommandID::show, CommandID::list, CommandID::status}) {
        EXPECT_EQ(run(command), exitFailed);
        EXPECT_THAT(m_complaints, ElementsAre("Tessly does not answer"));
    }
}

TEST_F(CommandRunnerTest, ThePermissionToTakeTheFocusIsPassedOn)
{
    TestBus bus;
    QDBusConnection other = bus.connect();
    ASSERT_TRUE(other.registerService(busName));
    Listener listener;
    ASSERT_TRUE(other.registerVirtualObject(busPath, &listener));
    m_connect = [&] { return bus.connect(); };
    run(CommandID::toggle);
    qputenv("XDG_ACTIVATION_TOKEN", "a token");
    run(CommandID::show);
    m_startsSecond = true;
    run({});
    qunsetenv("XDG_ACTIVATION_TOKEN");
    // Answered by nobody while the commands ran, which this thread waited for.
    ASSERT_TRUE(waitUntil([&] { return listener.calls.size() == 3; }));
    EXPECT_EQ(listener.calls[0].member(), u"Toggle"_s);
    EXPECT_THAT(listener.calls[0].arguments(), IsEmpty());
    for (const std::size_t call : {1U, 2U}) {
        EXPECT_EQ(listener.calls[call].member(), u"Show"_s);
        ASSERT_THAT(listener.calls[call].arguments(), SizeIs(1));
        EXPECT_EQ(
            qdbus_cast<QVariantMap>(listener.calls[call].arguments().at(0)),
            (QVariantMap{{u"activation-token"_s, u"a token"_s}}));
    }
}

TEST_F(CommandRunnerTest, ASecondStartWhoseFirstHasEndedMayStart)
{
    m_startsSecond = true;
    EXPECT_EQ(run({}), -1);
    TestBus bus;
    m_connect = [&] { return bus.connect(); };
    EXPECT_EQ(run({}), -1);
    EXPECT_THAT(m_complaints, IsEmpty());
}

TEST_F(CommandRunnerTest, WhatCannotBePrintedIsSaidUnlessTheReaderHasEnough)
{
    m_printError = ENOSPC;
    EXPECT_EQ(run(CommandID::list), exitFailed);
    EXPECT_THAT(m_complaints, ElementsAre("could not print: No space left on device"));
    m_printError = EPIPE;
    EXPECT_EQ(run(CommandID::list), exitFailed);
    EXPECT_THAT(m_complaints, IsEmpty());
}

/// Beside a data folder a place for exported files.
class TransferTest : public CommandRunnerTest
{
protected:
    QTemporaryDir m_elsewhere;
    QString m_file = m_elsewhere.filePath(u"export.jsonl"_s);
};

TEST_F(TransferTest, WhatIsExportedIsImportedIntoAnEmptyHistory)
{
    fill();
    {
        ClipDatabase database(m_databasePath, [this] { return m_now; });
        database.setPinned(true, database.clip(2)->id);
    }
    EXPECT_EQ(exportTo(m_file), 0);
    EXPECT_EQ(m_printed, "");
    const QJsonArray before = listed();
    EXPECT_EQ(before.size(), 3);
    ASSERT_TRUE(QFile::remove(m_databasePath));
    EXPECT_EQ(importFrom(m_file), 0);
    EXPECT_EQ(m_printed, "3 added, 0 there already, 0 refused\n");
    EXPECT_EQ(listed(), before);
    EXPECT_EQ(importFrom(m_file), 0);
    EXPECT_EQ(m_printed, "0 added, 3 there already, 0 refused\n");
    EXPECT_EQ(listed(), before);
    EXPECT_THAT(m_remarks, IsEmpty());
    EXPECT_FALSE(InstanceLock::isHeld(m_folder.path()));
}

TEST_F(TransferTest, AMinusStandsForStandardOutputAndInput)
{
    fill();
    EXPECT_EQ(exportTo(u"-"_s), 0);
    const QByteArray exported = m_printed;
    EXPECT_EQ(exportTo(m_file), 0);
    EXPECT_EQ(contents(m_file), exported);
    ASSERT_TRUE(QFile::remove(m_databasePath));
    QFile file(m_file);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    m_input = file.handle();
    EXPECT_EQ(importFrom(u"-"_s), 0);
    EXPECT_EQ(m_printed, "3 added, 0 there already, 0 refused\n");
}

TEST_F(TransferTest, TextsFromElsewhereAreListedBelowWhatIsThere)
{
    fill();
    const QJsonArray before = listed();
    // The second is there already, the third is not UTF-8.
    const QByteArray known = before.last().toObject().value("preview"_L1).toString().toUtf8();
    put(m_file, "newest\nof them" + QByteArray(1, '\0') + known + '\0' + "\xff" + '\0' + "older");
    EXPECT_EQ(importTextsFrom(m_file), exitFailed);
    EXPECT_EQ(m_printed, "2 added, 1 there already, 1 refused\n");
    ASSERT_THAT(m_remarks, SizeIs(1));
    EXPECT_THAT(m_remarks[0], AllOf(HasSubstr(":3: "), HasSubstr("is not UTF-8")));
    QJsonArray after = listed();
    ASSERT_EQ(after.size(), before.size() + 2);
    EXPECT_EQ(after.last().toObject().value("preview"_L1), u"older"_s);
    after.removeLast();
    EXPECT_EQ(after.last().toObject().value("preview"_L1), u"newest of them"_s);
    after.removeLast();
    EXPECT_EQ(after, before);
}

TEST_F(TransferTest, OfTextsTheNewestAreKeptAndNothingGoesForThem)
{
    fill();
    const QJsonArray before = listed();
    m_maximumHistory = 10;
    QByteArray texts;
    for (int i = 0; i < 9; ++i) {
        texts += "text " + QByteArray::number(i) + '\0';
    }
    put(m_file, texts);
    EXPECT_EQ(importTextsFrom(m_file), exitFailed);
    EXPECT_EQ(m_printed, "7 added, 0 there already, 2 refused\n");
    const QJsonArray after = listed();
    ASSERT_EQ(after.size(), 10);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(after[i], before[i]);
    }
    EXPECT_EQ(after.last().toObject().value("preview"_L1), u"text 6"_s);
}

TEST_F(TransferTest, AnExportThatCannotBePrintedIsSaidUnlessTheReaderHasEnough)
{
    m_printError = ENOSPC;
    EXPECT_EQ(exportTo(u"-"_s), exitFailed);
    EXPECT_THAT(m_complaints, ElementsAre("could not print: No space left on device"));
    m_printError = EPIPE;
    EXPECT_EQ(exportTo(u"-"_s), exitFailed);
    EXPECT_THAT(m_complaints, IsEmpty());
}

TEST_F(TransferTest, WhatIsDamagedIsLeftOutAndSaid)
{
    fill();
    SQLiteConnection(m_databasePath)
        .execute("UPDATE clips SET plain_text = 'another' WHERE rowid = 1;");
    EXPECT_EQ(exportTo(m_file), exitFailed);
    EXPECT_THAT(m_complaints, IsEmpty());
    EXPECT_THAT(
        m_remarks, ElementsAre(
                       m_file.toStdString() +
                       ": entry 3 is left out: A clipboard item is not what was stored."));
    ASSERT_TRUE(QFile::remove(m_databasePath));
    EXPECT_EQ(importFrom(m_file), 0);
    EXPECT_EQ(m_printed, "2 added, 0 there already, 0 refused\n");
}

TEST_F(TransferTest, NothingIsExportedWhileADamagedHistoryIsBroughtOver)
{
    put(m_file, "the one before");
    fill();
    ASSERT_TRUE(AppPaths::recoverDatabaseFiles(m_folder.path()));
    EXPECT_EQ(exportTo(m_file), exitFailed);
    EXPECT_THAT(
        m_complaints,
        ElementsAre("A damaged history is still being brought over; export it then."));
    EXPECT_EQ(contents(m_file), "the one before");
}

TEST_F(TransferTest, AnExportThatFailsLeavesTheFileOfBefore)
{
    put(m_file, "the one before");
    fill();
    put(m_databasePath, QByteArray(8192, 'x'));
    EXPECT_EQ(exportTo(m_file), exitFailed);
    EXPECT_THAT(
        m_complaints,
        ElementsAre("Clipboard database integrity check failed: file is not a database"));
    EXPECT_EQ(contents(m_file), "the one before");
    EXPECT_EQ(QDir(m_elsewhere.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

TEST_F(TransferTest, AnExportNeverReplacesAFileOfTheHistory)
{
    fill();
    const QByteArray before = contents(m_databasePath);
    ASSERT_TRUE(QFile::link(m_databasePath, m_file));
    for (const QString& file : {m_databasePath, m_folder.filePath(u"tessly.lock"_s), m_file}) {
        EXPECT_EQ(exportTo(file), exitFailed);
        EXPECT_THAT(
            m_complaints, ElementsAre(HasSubstr("it is in the folder of the history itself")));
    }
    EXPECT_EQ(contents(m_databasePath), before);
    EXPECT_EQ(QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

TEST_F(TransferTest, WhatIsRefusedIsSaidLineByLine)
{
    fill();
    EXPECT_EQ(exportTo(m_file), 0);
    QByteArrayList lines = contents(m_file).split('\n');
    lines[2].replace("\"copyCount\":1", "\"copyCount\":0");
    lines[3] = "\x1b[31mnonsense";
    put(m_file, lines.join('\n'));
    ASSERT_TRUE(QFile::remove(m_databasePath));
    EXPECT_EQ(importFrom(m_file), exitFailed);
    EXPECT_EQ(m_printed, "1 added, 0 there already, 2 refused\n");
    const std::string name = m_file.toStdString();
    EXPECT_THAT(
        m_remarks, ElementsAre(
                       name + ":3: copyCount is out of range",
                       name + ":4: it is no entry: not a JSON object of the right form"));
    EXPECT_THAT(m_complaints, IsEmpty());
}

TEST_F(TransferTest, WhatTheSettingsDoNotLetTheHistoryKeepIsRefused)
{
    for (int i = 0; i < 12; ++i) {
        ClipDatabase database(m_databasePath, [this] { return m_now++; });
        database.save(ClipPayload({.plainText = QByteArray::number(i)}), {}, {}, 500);
    }
    EXPECT_EQ(exportTo(m_file), 0);
    ASSERT_TRUE(QFile::remove(m_databasePath));
    m_maximumHistory = 10;
    EXPECT_EQ(importFrom(m_file), exitFailed);
    EXPECT_EQ(m_printed, "10 added, 0 there already, 2 refused\n");
    // Exports begin with the newest.
    EXPECT_EQ(listed()[0].toObject()[u"preview"_s], u"11"_s);
}

TEST_F(TransferTest, WhatCannotBeReadIsSaidAndTouchesNothing)
{
    EXPECT_EQ(importFrom(m_elsewhere.filePath(u"nothing"_s)), exitFailed);
    EXPECT_THAT(m_complaints, ElementsAre(HasSubstr("No such file or directory")));
    EXPECT_EQ(importFrom(m_elsewhere.path()), exitFailed);
    EXPECT_THAT(m_complaints, ElementsAre(HasSubstr("Is a directory")));
    put(m_file, "no export");
    EXPECT_EQ(importFrom(m_file), exitFailed);
    EXPECT_THAT(
        m_remarks,
        ElementsAre(m_file.toStdString() + ":1: here should be the first line of an export"));
    EXPECT_THAT(QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden), IsEmpty());
}

TEST_F(TransferTest, ADamagedHistoryIsNotImportedInto)
{
    fill();
    EXPECT_EQ(exportTo(m_file), 0);
    const QByteArray garbage(8192, 'x');
    put(m_databasePath, garbage);
    EXPECT_EQ(importFrom(m_file), exitFailed);
    EXPECT_EQ(m_printed, "0 added, 0 there already, 0 refused\n");
    EXPECT_THAT(
        m_complaints,
        ElementsAre("Clipboard database integrity check failed: file is not a database"));
    EXPECT_EQ(contents(m_databasePath), garbage);
}

TEST_F(TransferTest, TextsAreNotImportedIntoADamagedHistoryEither)
{
    const QByteArray garbage(8192, 'x');
    put(m_databasePath, garbage);
    put(m_file, "text");
    EXPECT_EQ(importTextsFrom(m_file), exitFailed);
    EXPECT_EQ(m_printed, "0 added, 0 there already, 0 refused\n");
    EXPECT_THAT(m_complaints, SizeIs(1));
    EXPECT_EQ(contents(m_databasePath), garbage);
}

TEST_F(TransferTest, WhatIsPlantedInThePlaceOfTheHistoryIsNeitherReadNorWritten)
{
    fill();
    EXPECT_EQ(exportTo(m_file), 0);
    ASSERT_TRUE(QFile::remove(m_databasePath));
    for (const Planted what : {Planted::pipe, Planted::link, Planted::linkToNothing}) {
        const QString victim = m_elsewhere.filePath(u"victim"_s);
        {
            const PlantedFile planted(what, m_databasePath, victim);
            for (const bool imports : {false, true}) {
                EXPECT_EQ(
                    imports ? importFrom(m_file) : exportTo(m_elsewhere.filePath(u"other"_s)),
                    exitFailed);
                EXPECT_THAT(m_complaints, ElementsAre(HasSubstr(planted.reason().toStdString())));
            }
            planted.expectUntouched();
        }
        QFile::remove(m_databasePath);
        QFile::remove(victim);
    }
}

TEST_F(TransferTest, AProgramThatIsOutOfReachIsExportedAndNotImportedInto)
{
    fill();
    const auto lock = InstanceLock::acquire(m_folder.path());
    EXPECT_EQ(exportTo(m_file), 0);
    EXPECT_EQ(contents(m_file).count('\n'), 5);
    EXPECT_EQ(importFrom(m_file), exitFailed);
    EXPECT_THAT(
        m_complaints,
        ElementsAre("Tessly is running, but there is no session bus on which to reach it"));
}

TEST_F(TransferTest, AProgramThatDoesNotAnswerIsSaid)
{
    fill();
    EXPECT_EQ(exportTo(m_file), 0);
    TestBus bus;
    QDBusConnection other = bus.connect();
    ASSERT_TRUE(other.registerService(busName));
    QObject object;
    ASSERT_TRUE(other.registerObject(busPath, &object, QDBusConnection::ExportAllSlots));
    m_connect = [&] { return bus.connect(); };
    EXPECT_EQ(importFrom(m_file), exitFailed);
    EXPECT_THAT(m_complaints, ElementsAre("Tessly does not answer"));
    EXPECT_EQ(m_printed, "0 added, 0 there already, 0 refused\n");
    const QByteArray before = contents(m_file);
    EXPECT_EQ(exportTo(m_file), exitFailed);
    EXPECT_THAT(m_complaints, ElementsAre("Tessly does not answer"));
    EXPECT_EQ(contents(m_file), before);
}

} // namespace
} // namespace tessly::test
