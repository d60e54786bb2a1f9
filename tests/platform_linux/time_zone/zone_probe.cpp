// Shows local times with the C library it was built with, before and after installing a zone itself:
//
//   zone_probe                 the times on standard input, a line each, "@" and seconds since 1970
//   zone_probe ID MODE MOMENT  the moment; the same moment after set_timezone; TZ of the environment, or "none"
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "platform.h"

static void show(long long moment) {
    const time_t time = (time_t)moment;
    char text[64] = "";
    tzset();
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %z %Z", localtime(&time));
    puts(text);
}

static int install(char** arguments) {
    const long long moment = atoll(arguments[2]);
    show(moment);
    if (set_timezone(0, atoi(arguments[0]), atoi(arguments[1]), nullptr) != 0) return 1;
    show(moment);
    puts(getenv("TZ") != nullptr ? getenv("TZ") : "none");
    return 0;
}

int main(int count, char** arguments) {
    if (count == 4) return install(arguments + 1);
    for (long long moment; scanf(" @%lld", &moment) == 1;) show(moment);
    return 0;
}
