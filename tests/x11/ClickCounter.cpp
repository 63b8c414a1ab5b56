// A window with a text field that says what mouse events it gets, and after each one which text is selected.
//
//     click-counter text|line
//
// "ready" comes once the window can be clicked. A double click selects the word under the pointer; a third click
// that the field counts to it selects the whole line, which is more than one word.
#include <QApplication>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTextEdit>
#include <QTimer>
#include <QWindow>

#include <cstdio>

namespace {

const QString text = QStringLiteral("abcdefghij klmnopqrst uvwxyz");

QString selectedText(const QTextEdit& field)
{
    return field.textCursor().selectedText();
}

QString selectedText(const QLineEdit& field)
{
    return field.selectedText();
}

template <typename Field> class Reporting : public Field {
public:
    using Field::Field;

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        Field::mousePressEvent(event);
        report("press");
    }

    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        Field::mouseDoubleClickEvent(event);
        report("doubleclick");
    }

    void mouseReleaseEvent(QMouseEvent* event) override
    {
        Field::mouseReleaseEvent(event);
        report("release");
    }

private:
    void report(const char* what)
    {
        std::printf("%s [%s]\n", what, selectedText(*this).toUtf8().constData());
        std::fflush(stdout);
    }
};

void showAndSayReady(QWidget& field)
{
    QFont font(QStringLiteral("monospace"));
    font.setStyleHint(QFont::Monospace);
    font.setPixelSize(40);
    field.setFont(font);
    field.setGeometry(0, 0, 800, 60);
    field.show();
    auto* poll = new QTimer(&field);
    QObject::connect(poll, &QTimer::timeout, &field, [&field, poll] {
        if (!field.windowHandle()->isExposed())
            return;
        poll->stop();
        std::puts("ready");
        std::fflush(stdout);
    });
    poll->start(20);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Reporting<QTextEdit> textField;
    Reporting<QLineEdit> lineField;
    if (application.arguments().value(1) == QLatin1String("line")) {
        lineField.setText(text);
        showAndSayReady(lineField);
    } else {
        textField.setPlainText(text);
        showAndSayReady(textField);
    }
    return application.exec();
}
