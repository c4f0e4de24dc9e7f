// Who decides what becomes of a call: nothing, it is noted, or it fails.
//
// ORVANE_FAULTS=record                        notes the places of all calls
// ORVANE_FAULTS="fail PLACE OCCURRENCE ERROR" fails one call: that of the place with this number,
// at
//                                             its so-manieth occurrence, with this value of errno;
//                                             0 lets it fall short instead
// ORVANE_FAULTS_REPORT=FILE                   where that is told
//
// What the program starts itself gets neither these nor the library.

#include "Place.h"
#include "PlaceTable.h"
#include "Report.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace faults {

namespace {

enum class Mode { Off, Records, Fails };

/// What is to fail. Set once, before there is a second thread.
struct Plan {
    Mode mode = Mode::Off;
    pid_t process = 0;
    unsigned long long place = 0;
    unsigned long occurrence = 0;
    int error = 0;
};

Plan plan;
PlaceTable table;
std::atomic<unsigned long> occurrences = 0;
/// The look at a call makes calls itself.
thread_local bool isLooking = false;

/// Forked children share the plan and the memory, but are not the program; only their becoming
/// another program is looked at.
bool concernsProgram(const Request& request) {
    return plan.mode != Mode::Off &&
           (::getpid() == plan.process || std::strcmp(request.call, "execve") == 0);
}

Verdict judge(const Request& request) {
    const Place place = currentPlace(request);
    if (!place.subject.canFail() || place.isOfTheDesktop()) {
        return {};
    }
    if (plan.mode == Mode::Records) {
        table.note(place);
        return {};
    }
    if (place.hash() != plan.place || ++occurrences != plan.occurrence) {
        return {};
    }
    tellFault(place, request, plan.occurrence, plan.error);
    return plan.error == 0 ? Verdict{Verdict::Kind::FallsShort}
                           : Verdict{Verdict::Kind::Fails, plan.error};
}

void readPlan(const char* text) {
    if (std::strcmp(text, "record") == 0) {
        plan.mode = Mode::Records;
    } else if (std::sscanf(text, "fail %llx %lu %d", &plan.place, &plan.occurrence, &plan.error) ==
               3) {
        plan.mode = Mode::Fails;
    }
}

__attribute__((constructor)) void begin() {
    const char* const wanted = std::getenv("ORVANE_FAULTS");
    const char* const report = std::getenv("ORVANE_FAULTS_REPORT");
    if (wanted != nullptr && report != nullptr) {
        learnTheProgram();
        openReport(report);
        plan.process = ::getpid();
        readPlan(wanted);
    }
    for (const char* name : {"LD_PRELOAD", "ORVANE_FAULTS", "ORVANE_FAULTS_REPORT"}) {
        ::unsetenv(name);
    }
}

__attribute__((destructor)) void end() {
    if (plan.mode == Mode::Records && ::getpid() == plan.process) {
        plan.mode = Mode::Off;
        table.tell();
    }
}

} // namespace

Verdict consider(const Request& request) {
    if (isLooking || !concernsProgram(request)) {
        return {};
    }
    const int before = errno;
    isLooking = true;
    const Verdict verdict = judge(request);
    isLooking = false;
    errno = before;
    return verdict;
}

} // namespace faults
