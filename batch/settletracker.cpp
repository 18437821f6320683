// SPDX-License-Identifier: MIT
#include "batch/settletracker.h"

#include "batch/photofile.h"

namespace batch {

void SettleTracker::follow(const QString& path, qint64 lingerMs)
{
    auto it = m_paths.find(path);
    if (it == m_paths.end()) {
        Followed f;
        PhotoIdentity id;
        notRegularReason(path, &id);
        f.size = id.size;
        f.modifiedNs = id.modifiedNs;
        f.changedNs = id.changedNs;
        f.unchangedFor.start();
        it = m_paths.insert(path, f);
    }
    it->lingerMs = qMax(it->lingerMs, lingerMs);
}

void SettleTracker::forget(const QString& path)
{
    m_paths.remove(path);
}

QStringList SettleTracker::settled()
{
    QStringList out;
    for (auto it = m_paths.begin(); it != m_paths.end();) {
        PhotoIdentity id;
        notRegularReason(it.key(), &id);
        if (!id.isValid()) {
            it = m_paths.erase(it);
            continue;
        }
        Followed& f = it.value();
        if (id.size != f.size || id.modifiedNs != f.modifiedNs || id.changedNs != f.changedNs) {
            f.size = id.size;
            f.modifiedNs = id.modifiedNs;
            f.changedNs = id.changedNs;
            f.unchangedFor.start();
            f.told = false;
        }
        const qint64 still = f.unchangedFor.elapsed();
        if (!f.told && still >= m_settleMs) {
            f.told = true;
            out << it.key();
        }
        if (f.told && still >= m_settleMs + f.lingerMs)
            it = m_paths.erase(it);
        else
            ++it;
    }
    return out;
}

} // namespace batch
