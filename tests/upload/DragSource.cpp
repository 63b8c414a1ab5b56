// drag-source [--text TEXT] [--png BYTES] [--url URL]... [--move-only] [FILE]...
// Another program that things are dragged from, as a file manager: a small window at the top left of the screen, in
// which a press and a move begin one drag. It would rather move than copy, and deletes the files if they were moved.
// Tells by lines on standard output: "ready", "started", and "ended copy", "ended move", "ended link" or "ended none".
#include <cstdio>
#include <QApplication>
#include <QCommandLineParser>
#include <QDrag>
#include <QFile>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <QUrl>
#include <QWidget>

namespace {

constexpr int side = 60; // pixels

void tell(const char* line)
{
    std::puts(line);
    std::fflush(stdout);
}

const char* nameOf(Qt::DropAction action)
{
    switch (action) {
    case Qt::CopyAction:
        return "ended copy";
    case Qt::MoveAction:
        return "ended move";
    case Qt::LinkAction:
        return "ended link";
    default:
        return "ended none";
    }
}

struct Offer {
    QStringList files;
    QList<QUrl> urls;
    QString text;
    QByteArray png;
    bool hasPng = false;
    Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;

    QMimeData* data() const
    {
        auto* data = new QMimeData;
        if (hasPng)
            data->setData(QStringLiteral("image/png"), png);
        if (!urls.isEmpty())
            data->setUrls(urls);
        if (!text.isEmpty())
            data->setText(text);
        return data;
    }
};

class Source : public QWidget {
public:
    explicit Source(Offer offer)
        : m_offer(std::move(offer))
    {
        setWindowFlags(Qt::Window | Qt::BypassWindowManagerHint | Qt::FramelessWindowHint);
        setGeometry(0, 0, side, side);
    }

protected:
    void showEvent(QShowEvent*) override
    {
        QTimer::singleShot(0, this, [] { tell("ready"); });
    }

    void mousePressEvent(QMouseEvent* event) override { m_pressedAt = event->pos(); }

    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (m_hasStarted
            || (event->pos() - m_pressedAt).manhattanLength() < QApplication::startDragDistance())
            return;
        m_hasStarted = true;
        auto* drag = new QDrag(this);
        drag->setMimeData(m_offer.data());
        tell("started");
        const Qt::DropAction action = drag->exec(m_offer.actions, Qt::MoveAction);
        if (action == Qt::MoveAction)
            for (const QString& file : m_offer.files)
                QFile::remove(file);
        tell(nameOf(action)); // what it offers can still be read: the target may be slow
    }

private:
    const Offer m_offer;
    QPoint m_pressedAt;
    bool m_hasStarted = false;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption text("text", "offers text", "text");
    const QCommandLineOption png("png", "offers an image of these bytes", "bytes");
    const QCommandLineOption url("url", "offers a URL", "url");
    const QCommandLineOption moveOnly("move-only", "offers nothing but to move");
    parser.addOptions({text, png, url, moveOnly});
    parser.process(application);

    Offer offer{.files = parser.positionalArguments(),
        .urls = {},
        .text = parser.value(text),
        .png = parser.value(png).toUtf8(),
        .hasPng = parser.isSet(png)};
    if (parser.isSet(moveOnly))
        offer.actions = Qt::MoveAction;
    for (const QString& address : parser.values(url))
        offer.urls += QUrl(address);
    for (const QString& file : offer.files)
        offer.urls += QUrl::fromLocalFile(file);
    Source source(std::move(offer));
    source.show();
    return QApplication::exec();
}
