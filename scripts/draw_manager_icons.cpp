// Draws the manager window's tool-button icons (Add, Reload, Remove, Reset, Duplicate, Merge) as PNG files in the
// sizes the manager looks for, for the Dark and the Light theme, into
// vandrels/resources/icons/<theme>/Vandrels/<name>_<size>.png. Run by hand when an icon changes:
//   g++ -std=c++20 -fPIC scripts/draw_manager_icons.cpp $(pkg-config --cflags --libs Qt6Gui) -o /tmp/draw_icons
//   QT_QPA_PLATFORM=offscreen /tmp/draw_icons vandrels/resources/icons
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <cstdio>
#include <functional>

namespace {

struct Theme {
    const char* name;
    QColor ink;     // outlines and glyphs
    QColor accent;  // the part that says what the button does
    QColor fill;    // document faces
};

// Every icon is drawn on a 24 x 24 canvas and scaled to its size.
using Drawing = std::function<void(QPainter&, const Theme&)>;

QPen Pen(const QColor& c, double width) { return QPen(c, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin); }

void Document(QPainter& p, const Theme& t, QRectF r) {
    p.setPen(Pen(t.ink, 1.4));
    p.setBrush(t.fill);
    QPainterPath page;
    page.moveTo(r.left(), r.top());
    page.lineTo(r.right() - 4, r.top());
    page.lineTo(r.right(), r.top() + 4);
    page.lineTo(r.right(), r.bottom());
    page.lineTo(r.left(), r.bottom());
    page.closeSubpath();
    p.drawPath(page);
}

void Arrow(QPainter& p, const QColor& c, double startDeg, double spanDeg, QRectF circle) {
    p.setPen(Pen(c, 2.2));
    p.setBrush(Qt::NoBrush);
    p.drawArc(circle, int(startDeg * 16), int(spanDeg * 16));
    // Arrow head at the end of the arc.
    const double end = (startDeg + spanDeg) * M_PI / 180.0;
    const QPointF centre = circle.center();
    const double radius = circle.width() / 2;
    const QPointF tip(centre.x() + radius * std::cos(end), centre.y() - radius * std::sin(end));
    const double dir = spanDeg > 0 ? 1 : -1;
    const QPointF tangent(-std::sin(end) * dir, -std::cos(end) * dir);
    const QPointF normal(std::cos(end), -std::sin(end));
    QPolygonF head;
    head << tip + tangent * 3.5 << tip + normal * 3.2 << tip - normal * 3.2;
    p.setPen(Pen(c, 1.0));
    p.setBrush(c);
    p.drawPolygon(head);
}

void Badge(QPainter& p, const QColor& c, const QPointF& centre, bool plus) {
    p.setPen(Qt::NoPen);
    p.setBrush(c);
    p.drawEllipse(centre, 5.5, 5.5);
    p.setPen(Pen(Qt::white, 2.0));
    p.drawLine(centre + QPointF(-3, 0), centre + QPointF(3, 0));
    if (plus) p.drawLine(centre + QPointF(0, -3), centre + QPointF(0, 3));
}

const std::pair<const char*, Drawing> kIcons[] = {
    {"Add", [](QPainter& p, const Theme& t) {
         Document(p, t, QRectF(3, 2, 13, 17));
         Badge(p, QColor(46, 160, 67), QPointF(16.5, 16.5), true);
     }},
    {"Reload", [](QPainter& p, const Theme& t) { Arrow(p, t.accent, 100, 290, QRectF(4, 4, 16, 16)); }},
    {"Remove", [](QPainter& p, const Theme& t) {
         Document(p, t, QRectF(3, 2, 13, 17));
         Badge(p, QColor(207, 34, 46), QPointF(16.5, 16.5), false);
     }},
    {"Reset", [](QPainter& p, const Theme& t) {
         Arrow(p, QColor(191, 135, 0), 80, -290, QRectF(4, 4, 16, 16));
         p.setPen(Qt::NoPen);
         p.setBrush(t.ink);
         p.drawEllipse(QPointF(12, 12), 2.2, 2.2);
     }},
    {"Duplicate", [](QPainter& p, const Theme& t) {
         Document(p, t, QRectF(3, 2, 11, 14));
         Theme front = t;
         front.ink = t.accent;
         Document(p, front, QRectF(9, 7, 11, 14));
     }},
    {"Merge", [](QPainter& p, const Theme& t) {
         p.setPen(Pen(t.ink, 2.0));
         p.setBrush(Qt::NoBrush);
         QPainterPath path;
         path.moveTo(5, 3);
         path.cubicTo(5, 10, 12, 10, 12, 14);
         path.moveTo(19, 3);
         path.cubicTo(19, 10, 12, 10, 12, 14);
         p.drawPath(path);
         p.setPen(Pen(QColor(130, 80, 223), 2.4));
         p.drawLine(QPointF(12, 13), QPointF(12, 20));
         p.setPen(Qt::NoPen);
         p.setBrush(QColor(130, 80, 223));
         p.drawPolygon(QPolygonF({QPointF(8, 17.5), QPointF(16, 17.5), QPointF(12, 22.5)}));
     }},
};

}  // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    const QString out = argc > 1 ? argv[1] : "vandrels/resources/icons";
    const Theme themes[] = {{"Dark", QColor(205, 205, 205), QColor(77, 163, 255), QColor(80, 84, 90)},
                            {"Light", QColor(70, 70, 70), QColor(9, 105, 218), QColor(250, 250, 250)}};
    for (const Theme& theme : themes) {
        const QString folder = QString("%1/%2/Vandrels").arg(out, theme.name);
        QDir().mkpath(folder);
        for (const auto& [name, draw] : kIcons)
            for (int size : {16, 20, 24, 30, 36, 48}) {
                QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
                image.fill(Qt::transparent);
                QPainter painter(&image);
                painter.setRenderHint(QPainter::Antialiasing);
                painter.scale(size / 24.0, size / 24.0);
                draw(painter, theme);
                painter.end();
                image.save(QString("%1/%2_%3.png").arg(folder, name).arg(size));
            }
    }
    std::printf("icons written to %s\n", qPrintable(out));
    return 0;
}
