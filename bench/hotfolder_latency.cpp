// SPDX-License-Identifier: MIT
// The time a guest waits at a photobooth: a photo written into the hot folder
// and closed, as a camera tool does, until its composite is in the output
// folder (renamed into place), seen through the kernel's events so that the
// measurement itself does not poll. Prints one line per photo: the name and
// the milliseconds from close to composite.
// Usage: plendra_hotfolder_latency SOURCE_PHOTO HOT_FOLDER OUTPUT_FOLDER COUNT
#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>

#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

QByteArray readAll(const char* path)
{
    QFile f(QString::fromLocal8Bit(path));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool writeAndClose(const QByteArray& path, const QByteArray& bytes)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd < 0)
        return false;
    const bool whole = ::write(fd, bytes.constData(), size_t(bytes.size())) == ssize_t(bytes.size());
    return ::close(fd) == 0 && whole;
}

// Waits (at most two minutes) for `name` to be moved into or closed in the
// watched output folder.
bool waitForComposite(int events, const QByteArray& name)
{
    alignas(inotify_event) char buffer[16384];
    QElapsedTimer limit;
    limit.start();
    while (limit.elapsed() < 120000) {
        pollfd p{events, POLLIN, 0};
        if (::poll(&p, 1, 1000) <= 0)
            continue;
        const ssize_t n = ::read(events, buffer, sizeof buffer);
        for (ssize_t at = 0; at < n;) {
            const auto* e = reinterpret_cast<const inotify_event*>(buffer + at);
            at += ssize_t(sizeof(inotify_event)) + e->len;
            if (e->len > 0 && name == QByteArray(e->name))
                return true;
        }
    }
    return false;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 5) {
        std::fprintf(stderr, "Usage: plendra_hotfolder_latency SOURCE_PHOTO HOT_FOLDER OUTPUT_FOLDER COUNT\n");
        return 2;
    }
    const QByteArray bytes = readAll(argv[1]);
    const int events = ::inotify_init1(IN_CLOEXEC);
    if (bytes.isEmpty() || events < 0 || ::inotify_add_watch(events, argv[3], IN_MOVED_TO | IN_CLOSE_WRITE) < 0) {
        std::fprintf(stderr, "cannot read the photo or watch the output folder\n");
        return 1;
    }
    for (int i = 0; i < QByteArray(argv[4]).toInt(); ++i) {
        const QByteArray name = "guest" + QByteArray::number(i) + ".jpg";
        if (!writeAndClose(QByteArray(argv[2]) + '/' + name, bytes))
            return 1;
        QElapsedTimer clock;
        clock.start(); // from the close
        if (!waitForComposite(events, name)) {
            std::fprintf(stderr, "no composite for %s\n", name.constData());
            return 1;
        }
        std::printf("%s %.1f\n", name.constData(), clock.nsecsElapsed() / 1e6);
        std::fflush(stdout);
        ::usleep(300000); // the watch idle again before the next guest
    }
    return 0;
}
