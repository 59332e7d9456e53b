#include "SampleHistory.h"

#include "TestSupport.h"

#include <QBuffer>
#include <QImage>

using namespace Qt::StringLiterals;

namespace tessly::test {

namespace {

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;

struct Sample
{
    ClipPayload::Fields fields;
    double age = 0;
    QString source = {};
    int copies = 1;
    bool isPinned = false;
};

QByteArray image()
{
    QImage picture(64, 48, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return png;
}

void saveAll(ClipStore& store, double& storeNow, double now, const std::vector<Sample>& samples)
{
    for (const Sample& sample : samples) {
        storeNow = now - sample.age;
        std::optional<QString> source;
        if (!sample.source.isEmpty()) {
            source = sample.source;
        }
        Clip clip;
        for (int i = 0; i < sample.copies; ++i) {
            clip = await(store.save(ClipPayload(sample.fields), source, {}, 10'000));
        }
        if (sample.isPinned) {
            await(store.setPinned(true, clip.id));
        }
    }
    storeNow = now;
}

} // namespace

void saveSampleHistory(ClipStore& store, double& storeNow, double now)
{
    const QByteArray rtf = "{\\rtf1 }";
    std::vector<Sample> samples;
    for (int i = 40; i > 0; --i) {
        samples.push_back(
            {{.plainText = "Item " + QByteArray::number(i) + " of the shopping list"},
             (10 + i) * day,
             u"Notes"_s});
    }
    samples.insert(
        samples.end(),
        {
            {{.plainText = "mailto:jane@example.org"}, 9 * day, u"Mail"_s},
            {{.plainText = "SELECT id, title FROM articles WHERE published ORDER BY date DESC;"},
             3 * day,
             u"Database Browser"_s,
             3},
            {{.fileURLs = {"file:///home/jane/Report%20Q3.pdf", "file:///home/jane/chart.png"}},
             26 * hour,
             u"Files"_s},
            {{.plainText = "+49 30 901820"}, 5 * hour},
            {{.imagePNG = image()}, 2 * hour, u"Screenshot"_s},
            {{.plainText = "Meeting notes: budget, hiring, roadmap", .rtf = rtf},
             40 * minute,
             u"LibreOffice Writer"_s,
             2},
            {{.plainText = "The quick brown fox jumps over the lazy dog, then turns around and "
                           "does it all over again for as long as anyone cares to watch."},
             12 * minute,
             u"Text Editor"_s},
            {{.plainText = "https://www.debian.org/releases/bookworm/"},
             4 * minute,
             u"Firefox"_s,
             1,
             true},
            {{.plainText = "git rebase --onto main topic~3 topic"}, 90, u"Terminal"_s, 4, true},
            {{.plainText = "Thank you, that works for me. See you on Thursday!"}, 20, u"Mail"_s},
        });
    saveAll(store, storeNow, now, samples);
}

void saveHostileContents(ClipStore& store, double& storeNow, double now)
{
    saveAll(
        store, storeNow, now,
        {
            {{.plainText = "<b>not bold</b> &amp; <img src='file:///etc/passwd'>"}, 7 * day},
            {{.plainText = "Z" + QByteArray("\xCD\x9B\xCD\xAB\xCC\xB4").repeated(30) + "algo"},
             6 * day,
             u"A program with a name that is much longer than any name should ever be, "
             "and then some more of it"_s},
            {{.plainText = QByteArray("tab\there, \x1B[31mescape\x07 bell, carriage\rreturn, "
                                      "line\xE2\x80\xA8separator")},
             5 * day,
             u"xterm"_s},
            {{.plainText =
                  "🎉 👩‍👩‍👧‍👦 🏴󠁧󠁢󠁥󠁮󠁧󠁿 🇩🇪 ✅ emoji, "
                  "é "
                  "combining, ﷽ wide"},
             4 * day,
             u"Chat"_s},
            {{.plainText = "日本語 한국어 ประเทศไทย हिन्दी Ελληνικά Русский"},
             3 * day,
             u"Firefox"_s},
            {{.plainText = "مرحبا بالعالم, mixed with Latin and 123"}, 2 * day, u"Firefox"_s},
            {{.plainText = "שלום עולם, זה טקסט בעברית שנועד לבדוק את הכיוון של השורה כשהיא ארוכה "
                           "יותר מן הרוחב שיש לה בחלון הזה ולכן נחתכת"},
             1 * day,
             u"Firefox"_s},
            {{.plainText = QByteArray(25 * 1024 * 1024, 'm')}, 2 * minute, u"less"_s},
        });
}

} // namespace tessly::test
