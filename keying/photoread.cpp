// SPDX-License-Identifier: MIT
#include "keying/photoread.h"

#include <QImageReader>

namespace keying {

bool readPhotoInto(const QString& path, QImage& photo)
{
    QImageReader reader(path);
    const QByteArray kind = reader.format();
    // Both decoders write every pixel of the picture or report failure: a
    // JPEG cut short still gets all its rows (grey ones past the end), a PNG
    // cut short does not read at all, so nothing of the earlier picture can
    // show. Other decoders may leave rows of a damaged file as they found
    // them. Memory that another image shares would be copied before it is
    // written: fresh memory costs less.
    if ((kind != "jpeg" && kind != "png") || !photo.isDetached())
        photo = QImage();
    if (!reader.read(&photo)) {
        photo = QImage();
        return false;
    }
    return true;
}

} // namespace keying
