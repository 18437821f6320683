// SPDX-License-Identifier: MIT
#include "batch/stopsignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace batch {

namespace {

// The handler may only write to a descriptor; the event loop reads it.
int g_pair[2] = {-1, -1};

extern "C" void onStopSignal(int number)
{
    const unsigned char byte = static_cast<unsigned char>(number);
    const ssize_t ignored = ::write(g_pair[0], &byte, 1);
    (void)ignored;
}

} // namespace

StopSignals::StopSignals(QObject* parent)
    : QObject(parent)
{
    if (g_pair[0] >= 0 || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, g_pair) != 0)
        return;
    m_notifier = new QSocketNotifier(g_pair[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &StopSignals::readSignal);
    struct sigaction action = {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

StopSignals::~StopSignals()
{
    if (!m_notifier)
        return;
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    ::close(g_pair[0]);
    ::close(g_pair[1]);
    g_pair[0] = g_pair[1] = -1;
}

void StopSignals::readSignal()
{
    unsigned char byte = 0;
    while (::read(g_pair[1], &byte, 1) == 1)
        emit stopRequested(byte);
}

} // namespace batch
