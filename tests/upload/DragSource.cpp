// drag-source [--text TEXT] [--png BYTES] [--url URL]... [--move-only] [--portal] [FILE]...
// Another program that things are dragged from, as a file manager: a small window at the top left of the screen, in
// which a press and a move begin one drag. It would rather move than copy, and deletes the files if they were moved.
// Tells by lines on standard output: "ready", "started", "would copy" whenever the target's answer changes, and "ended copy";
// also with "move", "link" or "none".
#include <cstdio>
#include <fcntl.h>
#include <QApplication>
#include <QCommandLineParser>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusUnixFileDescriptor>
#include <QDrag>
#include <QFile>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <QUrl>
#include <QWidget>
#include <string>
#include <unistd.h>

namespace {

constexpr int side = 60; // pixels

void tell(const std::string& line)
{
    std::puts(line.c_str());
    std::fflush(stdout);
}

std::string nameOf(Qt::DropAction action)
{
    switch (action) {
    case Qt::CopyAction:
        return "copy";
    case Qt::MoveAction:
        return "move";
    case Qt::LinkAction:
        return "link";
    default:
        return "none";
    }
}

QVariant callPortal(const QString& method, const QVariantList& arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Documents"),
        QStringLiteral("/org/freedesktop/portal/documents"),
        QStringLiteral("org.freedesktop.portal.FileTransfer"), method);
    call.setArguments(arguments);
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call);
    if (reply.type() == QDBusMessage::ErrorMessage)
        qFatal("%s", qPrintable(reply.errorMessage()));
    return reply.arguments().value(0);
}

/// Hands files to the FileTransfer portal, as a sandboxed program has to; returns the key that they are fetched by.
QByteArray handToPortal(const QStringList& files)
{
    qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
    QList<QDBusUnixFileDescriptor> descriptors;
    for (const QString& file : files) {
        const int fd = open(QFile::encodeName(file).constData(), O_PATH | O_CLOEXEC);
        descriptors.append(QDBusUnixFileDescriptor(fd)); // which takes a copy
        close(fd);
    }
    const QString key = callPortal(QStringLiteral("StartTransfer"), {QVariantMap()}).toString();
    callPortal(QStringLiteral("AddFiles"), {key, QVariant::fromValue(descriptors), QVariantMap()});
    return key.toUtf8();
}

struct Offer {
    QStringList files;
    QList<QUrl> urls;
    QByteArray portalKey;
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
        if (!portalKey.isEmpty())
            data->setData(QStringLiteral("application/vnd.portal.filetransfer"), portalKey);
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
        connect(drag, &QDrag::actionChanged, this,
            [](Qt::DropAction action) { tell("would " + nameOf(action)); });
        tell("started");
        const Qt::DropAction action = drag->exec(m_offer.actions, Qt::MoveAction);
        if (action == Qt::MoveAction)
            for (const QString& file : m_offer.files)
                QFile::remove(file);
        tell("ended " + nameOf(action)); // what it offers can still be read: the target may be slow
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
    const QCommandLineOption portal("portal", "hands the files over by the FileTransfer portal");
    parser.addOptions({text, png, url, moveOnly, portal});
    parser.process(application);

    Offer offer{.files = parser.positionalArguments(),
        .urls = {},
        .portalKey = {},
        .text = parser.value(text),
        .png = parser.value(png).toUtf8(),
        .hasPng = parser.isSet(png)};
    if (parser.isSet(moveOnly))
        offer.actions = Qt::MoveAction;
    for (const QString& address : parser.values(url))
        offer.urls += QUrl(address);
    if (parser.isSet(portal))
        offer.portalKey = handToPortal(offer.files);
    else
        for (const QString& file : offer.files)
            offer.urls += QUrl::fromLocalFile(file);
    Source source(std::move(offer));
    source.show();
    return QApplication::exec();
}
