#include "ResultHub.h"

#include "Output.h"
#include "ThreadChecks.h"

namespace orv {

void ResultHub::add(Output& output) {
    ORV_ON_MAIN();
    outputs_.push_back(&output);
}

void ResultHub::ShowTranslation(const Result& result) {
    ORV_ON_MAIN();
    for (Output* output : outputs_) {
        output->take(result);
    }
}

} // namespace orv
