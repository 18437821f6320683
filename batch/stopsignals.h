// SPDX-License-Identifier: MIT
#pragma once

// SIGINT and SIGTERM turned into a Qt signal on the thread that made this
// object, so that a run can finish the photos being keyed and end cleanly.

#include <QObject>

class QSocketNotifier;

namespace batch {

class StopSignals : public QObject
{
    Q_OBJECT

public:
    explicit StopSignals(QObject* parent = nullptr);
    ~StopSignals() override;

    bool isValid() const { return m_notifier != nullptr; }

signals:
    void stopRequested(int signalNumber);

private:
    void readSignal();

    QSocketNotifier* m_notifier = nullptr;
};

} // namespace batch
