// SPDX-License-Identifier: MIT
// A stand-in for a file manager in the end-to-end tests: a small window that,
// when pressed, drags the files named on its command line to wherever the
// pointer is released, the way a desktop drags files into a program.
//
//   plendra_filedragsource <x> <y> <file>...
//
// Shows itself at screen position (x, y), titled "Plendra test file source",
// prints "ready" once shown and "drag ended <action>" (the Qt::DropAction
// that the drop reported back) when a drag is over.

#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QTimer>
#include <QUrl>

#include <cstdio>

namespace {

class FileSource : public QLabel
{
public:
    explicit FileSource(const QList<QUrl>& files)
        : m_files(files)
    {
        setText(QStringLiteral("drag me"));
        setAlignment(Qt::AlignCenter);
        setStyleSheet(QStringLiteral("background: rgb(255, 160, 0);"));
    }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        if (event->button() != Qt::LeftButton)
            return;
        auto* data = new QMimeData;
        data->setUrls(m_files);
        auto* drag = new QDrag(this);
        drag->setMimeData(data);
        // What a file manager offers: copy by default, move or link on request.
        const Qt::DropAction done = drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
        std::printf("drag ended %d\n", int(done));
        std::fflush(stdout);
    }

private:
    QList<QUrl> m_files;
};

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 4) {
        std::fprintf(stderr, "usage: plendra_filedragsource <x> <y> <file>...\n");
        return 2;
    }
    QList<QUrl> files;
    for (const QString& path : args.mid(3))
        files << QUrl::fromLocalFile(path);

    FileSource source(files);
    source.setWindowTitle(QStringLiteral("Plendra test file source"));
    source.setGeometry(args.at(1).toInt(), args.at(2).toInt(), 150, 100);
    source.show();
    QTimer::singleShot(0, &source, [] {
        std::printf("ready\n");
        std::fflush(stdout);
    });
    return app.exec();
}
