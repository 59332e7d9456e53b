// Writes to a history until it is killed, and says of each write that it is done, once it is.

#include "ClipStore.h"
#include "ThreadExecutor.h"

#include <QCoreApplication>
#include <QRandomGenerator>

#include <cstdio>
#include <ctime>

using namespace tessly;

namespace {

double now()
{
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void report(const char* what, QUuid id)
{
    std::printf("%s %s\n", what, id.toByteArray(QUuid::WithoutBraces).constData());
    std::fflush(stdout);
}

QByteArray noise(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

ClipPayload content()
{
    QRandomGenerator& random = *QRandomGenerator::global();
    if (random.bounded(10) == 0) {
        return ClipPayload({.imagePNG = noise(400'000)});
    }
    QByteArray text;
    for (int words = random.bounded(1, 200); words > 0; --words) {
        text += "word" + QByteArray::number(random.generate() % 1'000'000) + ' ';
    }
    return ClipPayload({.plainText = text});
}

QCoro::Task<void> write(ClipStore& store)
{
    QRandomGenerator& random = *QRandomGenerator::global();
    std::vector<Clip> saved;
    for (;;) {
        saved.push_back(co_await store.save(content(), QStringLiteral("App"), std::nullopt, 5000));
        report("saved", saved.back().id);
        const auto any = [&] {
            return saved.begin() + random.bounded(static_cast<int>(saved.size()));
        };
        switch (random.bounded(8)) {
        case 0: {
            const auto clip = any();
            // Said before as well: whether it is done when the end comes, nobody knows.
            report("removing", clip->id);
            co_await store.remove(clip->id);
            report("removed", clip->id);
            saved.erase(clip);
            break;
        }
        case 1:
            co_await store.setPinned(true, any()->id);
            break;
        case 2:
            co_await store.markUsed(any()->id, true);
            break;
        default:
            break;
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    ClipStore store(
        QString::fromLocal8Bit(argv[1]), now, std::make_unique<ThreadExecutor>("store"));
    const QCoro::Task<void> writing = write(store);
    return QCoreApplication::exec();
}
