// SPDX-License-Identifier: MIT
#pragma once

// Whether the kernel's change events can be trusted for a folder. On a
// network file system (NFS, SMB/CIFS, 9p, AFS, Ceph...) or a FUSE one, a file
// written by another machine, or by the file system's own daemon, changes
// without an event on this one: such folders are looked at every so often.

#include <QString>

namespace batch {

// Empty when events arrive for `folder`'s file system, else the name of the
// kind of file system where they may not ("a network file system (NFS)").
QString eventlessFileSystem(const QString& folder);

} // namespace batch
