#include "process/daemon_run.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "support/captured_stderr.h"
#include "support/child_process.h"

int qvp_main(int argc, char* argv[]);

namespace unit {

Substitutes& substitutes() {
    static Substitutes substitutes;
    return substitutes;
}

static int runMain(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "qvp");
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    fake::scriptNetwork();
    return qvp_main(static_cast<int>(arguments.size()), argv.data());
}

DaemonRun runDaemon(const std::vector<std::string>& arguments, const std::vector<int>& closed) {
    DaemonRun run{};
    const CapturedStderr captured;
    const pid_t child = fork();
    if (child == 0) {
        for (const int descriptor : closed) close(descriptor);
        const int status = runMain(arguments) & 0xFF;
        fake::clearScript();  // what comes now is not the daemon's
        endChild(status);
    }
    int status = 0;
    waitpid(child, &status, 0);
    fake::clearScript();
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    run.standardError = captured.text();
    run.trace = linesOf(run.standardError);
    return run;
}

std::vector<std::string> DaemonRun::serviceTrace() const {
    std::vector<std::string> lines = trace;
    std::erase_if(lines, [](const std::string& line) {
        return line.find("[qvp_function]") != std::string::npos || line.find("[landap_function]") != std::string::npos;
    });
    return lines;
}

void DaemonTest::SetUp() {
    seedCamera();
    clearFlags();
    setenv("TZ", "UTC0", 1);
    substitutes() = {};
}

static int substituteFill(std::uint8_t* reply, int page, int size) {
    std::vector<int>& results = substitutes().fillResults;
    const int result = results.empty() ? -1 : results.front();
    if (!results.empty()) results.erase(results.begin());
    fake::record("fill " + std::to_string(page) + " " + std::to_string(size) + " " + std::to_string(reply[700]));
    if (result > 0) {
        reply[0] = static_cast<std::uint8_t>(page);
        reply[700] = static_cast<std::uint8_t>(reply[700] + 1);
    }
    return result;
}

}  // namespace unit

using unit::substitutes;

extern "C" {

int __real__Z17qvp_function_initPKc(const char* name);
int __real__Z20landap_function_initPKc(const char* name);
int __real__Z22checkSiteSurveyRequestPKhPhiPi(const uint8_t* request, uint8_t* reply, int capacity, int* accepted);
int __real__Z29landap_checkSiteSurveyRequestPKhPhiPi(const uint8_t* request, uint8_t* reply, int capacity,
                                                     int* accepted);
int __real__Z18fillSiteSurveyInfoPKhPhiiPKci(const uint8_t* request, uint8_t* reply, int capacity, int page,
                                             const char* sites, int size);
int __real__Z25landap_fillSiteSurveyInfoPKhPhiiPKci(const uint8_t* request, uint8_t* reply, int capacity, int page,
                                                    const char* sites, int size);

int __wrap__Z17qvp_function_initPKc(const char* name) {
    return substitutes().primaryInitFails ? -1 : __real__Z17qvp_function_initPKc(name);
}

int __wrap__Z20landap_function_initPKc(const char* name) {
    return substitutes().landapInitFails ? -1 : __real__Z20landap_function_initPKc(name);
}

int __wrap__Z22checkSiteSurveyRequestPKhPhiPi(const uint8_t* request, uint8_t* reply, int capacity, int* accepted) {
    if (!substitutes().siteSurvey) {
        return __real__Z22checkSiteSurveyRequestPKhPhiPi(request, reply, capacity, accepted);
    }
    *accepted = substitutes().accepted;
    return substitutes().checkResult;
}

int __wrap__Z29landap_checkSiteSurveyRequestPKhPhiPi(const uint8_t* request, uint8_t* reply, int capacity,
                                                     int* accepted) {
    if (!substitutes().siteSurvey) {
        return __real__Z29landap_checkSiteSurveyRequestPKhPhiPi(request, reply, capacity, accepted);
    }
    *accepted = substitutes().accepted;
    return substitutes().checkResult;
}

int __wrap__Z18fillSiteSurveyInfoPKhPhiiPKci(const uint8_t* request, uint8_t* reply, int capacity, int page,
                                             const char* sites, int size) {
    if (substitutes().siteSurvey) return unit::substituteFill(reply, page, size);
    return __real__Z18fillSiteSurveyInfoPKhPhiiPKci(request, reply, capacity, page, sites, size);
}

int __wrap__Z25landap_fillSiteSurveyInfoPKhPhiiPKci(const uint8_t* request, uint8_t* reply, int capacity, int page,
                                                    const char* sites, int size) {
    if (substitutes().siteSurvey) return unit::substituteFill(reply, page, size);
    return __real__Z25landap_fillSiteSurveyInfoPKhPhiiPKci(request, reply, capacity, page, sites, size);
}

}  // extern "C"
