#include "ResultHub.h"

#include "Output.h"
#include "ThreadChecks.h"

#include <utility>

namespace orv {

ResultHub::ResultHub(QObject* parent)
    : QObject(parent) {}

ResultHub::~ResultHub() = default;

void ResultHub::add(Output& output) {
    ORV_ON_MAIN();
    outputs_.push_back(&output);
}

void ResultHub::add(std::unique_ptr<Output> output) {
    add(*output);
    own_.push_back(std::move(output));
}

void ResultHub::ShowTranslation(const Result& result) {
    ORV_ON_MAIN();
    for (Output* output : outputs_) {
        output->take(result);
    }
}

} // namespace orv
