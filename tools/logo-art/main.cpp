// Draws the program's emblem and its logo with lettering into the resources folder:
//   tessaly-logo-art <resources folder>
// The PNGs are committed; run this only to change the artwork.

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QTextStream>

namespace {

const QColor accent(0x00, 0xab, 0xad);
const QColor accentDeep(0x00, 0x86, 0x88);
const QColor ink(0x23, 0x26, 0x2e);

// The emblem in a 256 x 256 design square: a teal disc crossed by a measurement channel, in which a
// cell, deformed to a bullet by the flow, travels to the right.
void paintEmblem(QPainter& p)
{
    p.save();
    QLinearGradient disc(0, 0, 0, 256);
    disc.setColorAt(0.0, accent.lighter(108));
    disc.setColorAt(1.0, accentDeep);
    p.setPen(Qt::NoPen);
    p.setBrush(disc);
    p.drawEllipse(QPointF(128, 128), 122, 122);

    QPainterPath discPath;
    discPath.addEllipse(QPointF(128, 128), 122, 122);
    p.setClipPath(discPath);

    // Channel walls.
    QPen wall(Qt::white, 9, Qt::SolidLine, Qt::RoundCap);
    p.setPen(wall);
    p.drawLine(QPointF(-10, 78), QPointF(266, 78));
    p.drawLine(QPointF(-10, 178), QPointF(266, 178));

    // Streaks behind the cell.
    QPen streak(QColor(255, 255, 255, 150), 7, Qt::SolidLine, Qt::RoundCap);
    p.setPen(streak);
    p.drawLine(QPointF(34, 110), QPointF(70, 110));
    p.drawLine(QPointF(22, 128), QPointF(66, 128));
    p.drawLine(QPointF(34, 146), QPointF(70, 146));

    // The deformed cell: a round front, a flattened, slightly hollow rear.
    QPainterPath cell;
    cell.moveTo(92, 98);
    cell.cubicTo(146, 88, 196, 98, 198, 128);
    cell.cubicTo(196, 158, 146, 168, 92, 158);
    cell.cubicTo(88, 150, 100, 138, 100, 128);
    cell.cubicTo(100, 118, 88, 106, 92, 98);
    p.setPen(Qt::NoPen);
    p.setBrush(Qt::white);
    p.drawPath(cell);

    // Nucleus.
    p.setBrush(accent);
    p.drawEllipse(QPointF(150, 128), 17, 15);
    p.restore();
}

QImage emblem(int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / 256.0, size / 256.0);
    paintEmblem(p);
    return image;
}

// Emblem and lettering on white, 1181 x 265.
QImage logo()
{
    QImage image(1181, 265, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);

    p.save();
    p.translate(36, 26);
    p.scale(213 / 256.0, 213 / 256.0);
    paintEmblem(p);
    p.restore();

    QFont name(QStringLiteral("DejaVu Sans"));
    name.setPixelSize(156);
    name.setWeight(QFont::Bold);
    name.setLetterSpacing(QFont::AbsoluteSpacing, -3);
    p.setFont(name);
    p.setPen(ink);
    p.drawText(QPointF(300, 166), QStringLiteral("Tessaly"));

    QFont tagline(QStringLiteral("DejaVu Sans"));
    tagline.setPixelSize(36);
    tagline.setLetterSpacing(QFont::AbsoluteSpacing, 9);
    p.setFont(tagline);
    p.setPen(accent);
    p.drawText(QPointF(306, 230), QStringLiteral("VQD DATA ANALYSIS"));
    return image;
}

bool save(const QImage& image, const QString& path)
{
    // Quality 0 asks for the strongest PNG compression; the files are committed.
    if (image.save(path, "PNG", 0))
        return true;
    QTextStream(stderr) << "cannot write " << path << '\n';
    return false;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", QByteArray("offscreen"));
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        QTextStream(stderr) << "usage: tessaly-logo-art <resources folder>\n";
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    const bool ok = save(emblem(256), out.filePath(QStringLiteral("Logo_Orvane_rgb_randlos_keinText.png")))
        && save(logo(), out.filePath(QStringLiteral("Logo_Orvane_rgb_randlos.png")));
    return ok ? 0 : 1;
}
