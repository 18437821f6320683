// SPDX-License-Identifier: MIT
#include "state/launchenvironment.h"

namespace {

QProcessEnvironment& remembered()
{
    static QProcessEnvironment environment{QProcessEnvironment::InheritFromParent};
    return environment;
}

bool& isRemembered()
{
    static bool done = false;
    return done;
}

} // namespace

void rememberLaunchEnvironment()
{
    if (isRemembered())
        return;
    remembered() = QProcessEnvironment::systemEnvironment();
    isRemembered() = true;
}

QProcessEnvironment launchEnvironment()
{
    return isRemembered() ? remembered() : QProcessEnvironment::systemEnvironment();
}
