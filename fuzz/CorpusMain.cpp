// Goes once over the files of a folder in place of libFuzzer.

#include <QDirIterator>
#include <QFile>

#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    int inputs = 0;
    QDirIterator files(QString::fromLocal8Bit(argv[1]), QDir::Files);
    while (files.hasNext()) {
        QFile file(files.next());
        std::fprintf(stderr, "%s\n", qUtf8Printable(file.fileName()));
        if (!file.open(QFile::ReadOnly)) {
            std::fprintf(stderr, "cannot be read\n");
            return 1;
        }
        const QByteArray bytes = file.readAll();
        LLVMFuzzerTestOneInput(
            reinterpret_cast<const std::uint8_t*>(bytes.constData()),
            static_cast<std::size_t>(bytes.size()));
        ++inputs;
    }
    // An empty corpus would show nothing.
    return inputs > 0 ? 0 : 1;
}
