#include <cstdio>
#include <utility>

#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

namespace {

QList<QUrl> urlsOf(const QStringList& arguments) {
    QList<QUrl> urls;
    for (const QString& argument : arguments) {
        const bool isUrl = argument.contains(QStringLiteral("://"));
        urls.append(isUrl ? QUrl(argument) : QUrl::fromLocalFile(argument));
    }
    return urls;
}

/// A window from which the files and addresses that it was given can be dragged, as often as one
/// likes, as from any other program on the desktop.
class DragSource : public QLabel {
public:
    explicit DragSource(QList<QUrl> urls) : m_urls(std::move(urls)) {
        setText(QStringLiteral("Drag me"));
        setAlignment(Qt::AlignCenter);
        setFixedSize(140, 90);
    }

protected:
    void mousePressEvent(QMouseEvent*) override { m_isPressed = true; }

    void mouseMoveEvent(QMouseEvent*) override {
        if (!std::exchange(m_isPressed, false))
            return;
        auto* data = new QMimeData;
        data->setUrls(m_urls);
        auto* drag = new QDrag(this);
        drag->setMimeData(data);
        const Qt::DropAction action = drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
        std::puts(action == Qt::IgnoreAction ? "refused" : "accepted");
        std::fflush(stdout);
    }

private:
    const QList<QUrl> m_urls;
    bool m_isPressed = false;
};

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    DragSource source(urlsOf(QApplication::arguments().mid(1)));
    source.setWindowTitle(QStringLiteral("Drag source"));
    source.show();
    return QApplication::exec();
}
