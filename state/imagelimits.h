// SPDX-License-Identifier: MIT
#pragma once

// Qt refuses to decode images above its allocation limit (128 MB in Qt 6.4,
// about 32 megapixels), but photographers shoot up to 100 megapixels and more.
// Raises the limit so that such photos load; called once at start-up.
void allowLargePhotos();
