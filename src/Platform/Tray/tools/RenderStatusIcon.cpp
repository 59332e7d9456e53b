// Draws the status icon at the sizes trays ask for and writes the drawings' opacity as C++: the
// resting program then needs neither the drawing's parser nor an image decoder for its icon.
//
//     render-status-icon DRAWING.svg OUTPUT.cpp

#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QTextStream>

#include <array>
#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array sizes = {16, 22, 24, 32, 48, 64, 128};

QImage drawn(QSvgRenderer& drawing, int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawing.render(&painter);
    painter.end();
    return image.convertToFormat(QImage::Format_Alpha8);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        qCritical("usage: render-status-icon DRAWING.svg OUTPUT.cpp");
        return EXIT_FAILURE;
    }
    QSvgRenderer drawing(arguments[1]);
    QFile file(arguments[2]);
    if (!drawing.isValid() || !file.open(QIODevice::WriteOnly)) {
        qCritical("cannot read the drawing or write the output");
        return EXIT_FAILURE;
    }
    QTextStream out(&file);
    out << "// Made by render-status-icon from a drawing.\n\n#include \"StatusIcon.h\"\n\n"
           "#include <array>\n\nnamespace tessly {\n\nnamespace {\n\n";
    for (const int size : sizes) {
        const QImage image = drawn(drawing, size);
        out << "constexpr std::array<std::uint8_t, " << size * size << "> opacity" << size
            << " = {";
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                out << (x == 0 ? "\n    " : "") << image.constScanLine(y)[x] << ',';
            }
        }
        out << "\n};\n\n";
    }
    out << "constexpr std::array drawings = {\n";
    for (const int size : sizes) {
        out << "    StatusIcon::Drawing{" << size << ", opacity" << size << "},\n";
    }
    out << "};\n\n} // namespace\n\nstd::span<const StatusIcon::Drawing> StatusIcon::drawings()\n"
           "{\n    return tessly::drawings;\n}\n\n} // namespace tessly\n";
    out.flush();
    return file.error() == QFileDevice::NoError && file.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}
