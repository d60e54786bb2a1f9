// Tells, operation by operation, what of a platform library does not keep the contract of platform/platform.h.
#include <getopt.h>
#include <net/if.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "checks/checks.h"
#include "report.h"

static constexpr char kUsage[] = R"(Check a platform library against platform/platform.h, on the machine that it is for.

  platform_conformance --interface eth0
  platform_conformance --interface eth0 --gateway 192.168.0.1 --dns 192.168.0.2 --dns2 none --administrator admin
  platform_conformance --interface eth0 --changing

A line an operation: ok, FAIL with what is wrong, or skipped with why. Exit status: 0; 1 when an operation failed; 2 for a
wrong option. Without the options below nothing is changed but files of its own, which it takes away again. A list of
wireless networks is asked for.

  --interface NAME       the interface to ask about; default eth0
  --gateway ADDRESS      what has to come; 'none' for no address. Without these what comes is shown
  --dns ADDRESS
  --dns2 ADDRESS
  --administrator NAME   a user of the group "admin"
  --folder FOLDER        for files of its own; default /tmp
  --only OPERATION       nothing but that one
  --seconds NUMBER       how long the checks of an operation may take; default 120

What changes the board:
  --store                writes every key of the store, and then what stood there before. A key without a value has then
                         an empty one. A power cut in between leaves the values of the checks
  --integers             writes slot 4 of the shared integers, and then what stood there before, or 0
  --zone                 sets the zone of the system, and then the one of the store, if it has one
  --changing             those three
  --firmware FILE        an image for this board: it is verified and written
  --configuration FILE   an archive of settings: it is deciphered and installed
)";

struct Operation {
    const char* name;
    void (*check)(const Settings&);
    bool writesStore;  // with --store
};
static constexpr Operation kOperations[] = {
    {"requestBegins", checkRequestBegins, true},
    {"cfgRead", checkCfgRead, true},
    {"cfgWrite", checkCfgWrite, true},
    {"CfgEnumSec", checkCfgEnumSec, false},
    {"CfgEnumField", checkCfgEnumField, false},
    {"ListFree", checkListFree, false},
    {"net_get_ifaddr", checkIfaddr, false},
    {"net_get_netmask", checkNetmask, false},
    {"net_get_gateway", checkGateway, false},
    {"net_get_dns", checkDns, false},
    {"net_get_dns2", checkDns2, false},
    {"net_get_hwaddr", checkHwaddr, false},
    {"Base64dec", checkBase64dec, false},
    {"usrInit", checkUsrInit, false},
    {"usrGetGroupName", checkUsrGetGroupName, false},
    {"SIReadInt", checkSIReadInt, false},
    {"SIWriteInt", checkSIWriteInt, false},
    {"get_oem_timezone_id", checkOemTimezoneId, false},
    {"get_real_timezone_id", checkRealTimezoneId, false},
    {"set_timezone", checkSetTimezone, false},
    {"getSiteList", checkSiteList, false},
    {"HWMIB_getRegion", checkRegion, false},
    {"VerifyFWCode", checkVerifyFWCode, false},
    {"UpgradeFWCode", checkUpgradeFWCode, false},
    {"cfgAesDecode", checkCfgAesDecode, false},
    {"unpackCFG", checkUnpackCFG, false},
};

static constexpr option kOptions[] = {
    {"store", no_argument, nullptr, 's'},
    {"integers", no_argument, nullptr, 'i'},
    {"zone", no_argument, nullptr, 'z'},
    {"changing", no_argument, nullptr, 'c'},
    {"interface", required_argument, nullptr, 'e'},
    {"gateway", required_argument, nullptr, 'g'},
    {"dns", required_argument, nullptr, 'd'},
    {"dns2", required_argument, nullptr, 'D'},
    {"administrator", required_argument, nullptr, 'a'},
    {"firmware", required_argument, nullptr, 'f'},
    {"configuration", required_argument, nullptr, 'u'},
    {"folder", required_argument, nullptr, 't'},
    {"only", required_argument, nullptr, 'n'},
    {"seconds", required_argument, nullptr, 'p'},
    {"help", no_argument, nullptr, 'h'},
    {"offsets", no_argument, nullptr, 'o'},
    {nullptr, 0, nullptr, 0},
};

// A day at most: a mistyped number is not to mean that nothing ends a check that hangs.
static bool takeSeconds(const char* text) {
    char* end = nullptr;
    const unsigned long seconds = strtoul(text, &end, 10);
    if (*end == '\0' && seconds >= 1 && seconds <= 86400) {
        patience = static_cast<unsigned>(seconds);
        return true;
    }
    fprintf(stderr, "--seconds: not a number from 1 to 86400: '%s'\n", text);
    return false;
}

static bool takeOperation(const char* name, Settings& settings) {
    settings.only = name;
    for (const Operation& operation : kOperations) {
        if (strcmp(name, operation.name) == 0) return true;
    }
    fprintf(stderr, "--only: no such operation: '%s'\n", name);
    return false;
}

static bool take(int letter, Settings& settings) {
    if (letter == 's' || letter == 'c') settings.store = true;
    if (letter == 'i' || letter == 'c') settings.integers = true;
    if (letter == 'z' || letter == 'c') settings.zone = true;
    if (letter == 'e') settings.interface = optarg;
    if (letter == 'g') settings.gateway = optarg;
    if (letter == 'd') settings.dns = optarg;
    if (letter == 'D') settings.dns2 = optarg;
    if (letter == 'a') settings.administrator = optarg;
    if (letter == 'f') settings.firmware = optarg;
    if (letter == 'u') settings.configuration = optarg;
    if (letter == 't') settings.folder = optarg;
    if (letter == 'n') return takeOperation(optarg, settings);
    if (letter == 'p') return takeSeconds(optarg);
    return letter != '?';
}

static int check(const Settings& settings) {
    int checked = 0;
    int failed = 0;
    if (if_nametoindex(settings.interface) == 0) {
        printf("note    there is no interface %s here, so none of its addresses is looked at (--interface)\n",
               settings.interface);
    }
    if (settings.store) saveStore();
    for (const Operation& operation : kOperations) {
        if (settings.only != nullptr && strcmp(settings.only, operation.name) != 0) continue;
        checked++;
        if (!runChecks(operation.name, operation.check, settings)) failed++;
        if (settings.store && operation.writesStore) restoreStore();
    }
    printf("%d operations, %d do not keep the contract\n", checked, failed);
    return failed == 0 ? 0 : 1;
}

int main(int count, char** arguments) {
    Settings settings = {};
    settings.interface = "eth0";
    settings.folder = "/tmp";
    for (int letter; (letter = getopt_long(count, arguments, "", kOptions, nullptr)) != -1;) {
        if (letter == 'o') return printOffsets();
        if (letter == 'h') return fputs(kUsage, stdout) >= 0 ? 0 : 2;
        if (!take(letter, settings)) return 2;
    }
    if (optind == count) return check(settings);
    fprintf(stderr, "%s: what is '%s'? (--help)\n", arguments[0], arguments[optind]);
    return 2;
}
