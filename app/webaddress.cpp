// SPDX-License-Identifier: MIT
#include "app/webaddress.h"

QString productWebAddress()
{
    return QStringLiteral(PLENDRA_WEB_ADDRESS);
}
