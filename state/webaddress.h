// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

// The product's web site, without a trailing slash. The help page and the
// help-request and feedback forms build their addresses on it. It is fixed
// when the program is built (the PLENDRA_WEB_ADDRESS build setting).
QString productWebAddress();
