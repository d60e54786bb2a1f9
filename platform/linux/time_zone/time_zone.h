// set_timezone with the folder to install into, for those who must not touch /etc.
#pragma once

#include "platform.h"

int installTimeZone(const char* folder, int id, int mode, const TimezoneRule* rule);
