#include "faults.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

bool isBroken(const char* operation, const char* fault) {
    char wanted[64];
    const char* named = getenv("QVP_FAULT");
    snprintf(wanted, sizeof wanted, "%s %s", operation, fault);
    return named != nullptr && strcmp(named, wanted) == 0;
}

void leakOf(const char* operation) {
    if (isBroken(operation, "leaks")) static_cast<void>(open("/dev/null", O_RDONLY));
}

int resultOf(const char* operation, int result) { return isBroken(operation, "result") ? 7 : result; }

int spoil(const char* operation, int result, void* out, unsigned long size) {
    char* bytes = static_cast<char*>(out);
    leakOf(operation);
    if (result == -1 && isBroken(operation, "touches")) bytes[size - 1] = 1;
    if (isBroken(operation, "behind")) bytes[size] = 1;
    if (isBroken(operation, "before")) bytes[-1] = 1;
    return resultOf(operation, result);
}
