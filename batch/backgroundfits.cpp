// SPDX-License-Identifier: MIT
#include "batch/backgroundfits.h"

#include "keying/pipeline.h"

#include <QMutexLocker>

namespace batch {

namespace {
// Each fit of a 24-megapixel photo holds about 100 MB; a folder of mixed
// sizes refits now and then rather than holding them all.
constexpr int kFitsKept = 2;
} // namespace

BackgroundFits::BackgroundFits(QImage background)
    : m_background(std::move(background))
{
}

QImage BackgroundFits::fittedTo(const QSize& size)
{
    QMutexLocker hold(&m_lock);
    for (int i = 0; i < m_fits.size(); ++i) {
        if (m_fits[i].size == size) {
            m_fits.move(i, m_fits.size() - 1);
            return m_fits.last().image;
        }
    }
    // Fitted while holding the lock, so that photos of a new size arriving
    // together wait for one fit instead of each making its own.
    Fit fit{size, keying::fittedBackground(m_background, size)};
    m_fits.append(fit);
    if (m_fits.size() > kFitsKept)
        m_fits.removeFirst();
    return fit.image;
}

} // namespace batch
