// SPDX-License-Identifier: MIT
#include "state/webaddress.h"

QString productWebAddress()
{
    return QStringLiteral(PLENDRA_WEB_ADDRESS);
}
