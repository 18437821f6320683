#!/bin/sh
# SPDX-License-Identifier: MIT
# Starts Plendra from its install folder, where the window icon, the sample
# photos and the "Bkg" folder lie beside Plendra.app.
here=$(CDPATH= cd -- "$(dirname -- "$0")/.." && pwd)
cd "$here" || exit 1
exec "$here/Plendra.app/Contents/MacOS/Plendra" "$@"
