#include "report.h"

#include <stdio.h>
#include <string.h>
#include <sys/mman.h>

struct Report {
    const char* operation;
    int failures;
    bool isSkipped;
    char note[160];
};

static Report* report;

unsigned patience = 120;

static void print(const char* verdict, const char* format, va_list values) {
    char text[512];
    vsnprintf(text, sizeof text, format, values);
    printf("%-8s%s: %s\n", verdict, report->operation, text);
    fflush(stdout);
}

void fail(const char* format, ...) {
    constexpr int kMostFailures = 5;  // of one operation; more tell no more
    va_list values;
    va_start(values, format);
    if (report->failures++ < kMostFailures) print("FAIL", format, values);
    va_end(values);
}

void skip(const char* format, ...) {
    va_list values;
    va_start(values, format);
    report->isSkipped = true;
    if (report->failures == 0) print("skipped", format, values);
    va_end(values);
}

void note(const char* format, ...) {
    va_list values;
    va_start(values, format);
    vsnprintf(report->note, sizeof report->note, format, values);
    va_end(values);
}

bool hasFailed() { return report->failures != 0; }

static void conclude(const char* operation, int status) {
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) {
        fail("does not return within %u seconds", patience);
    } else if (WIFSIGNALED(status)) {
        fail("ends by signal %d (%s)", WTERMSIG(status), strsignal(WTERMSIG(status)));
    } else if (!isFinished(status)) {
        fail("ends the process that calls it");
    }
    if (report->failures != 0 || report->isSkipped) return;
    printf("ok      %s%s%s\n", operation, report->note[0] != '\0' ? ": " : "", report->note);
    fflush(stdout);
}

bool runChecks(const char* operation, void (*check)(const Settings&), const Settings& settings) {
    if (report == nullptr) {
        void* shared = mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (shared == MAP_FAILED) abort();
        report = static_cast<Report*>(shared);
    }
    memset(report, 0, sizeof *report);
    report->operation = operation;
    const int status = tryInProcess([&] { check(settings); });
    conclude(operation, status);
    return report->failures == 0;
}
