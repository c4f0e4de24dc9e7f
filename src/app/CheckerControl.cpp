#include "CheckerControl.h"

#include "UpdateChecker.h"

#include <utility>

namespace orv {

namespace {

UpdateControl::Outcome outcomeOf(UpdateOutcome outcome) {
    switch (outcome) {
    case UpdateOutcome::Available:
        return UpdateControl::Outcome::Available;
    case UpdateOutcome::UpToDate:
        return UpdateControl::Outcome::UpToDate;
    case UpdateOutcome::Failed:
        break;
    }
    return UpdateControl::Outcome::Failed;
}

class CheckerControl : public UpdateControl {
  public:
    explicit CheckerControl(UpdateChecker& checker)
        : checker_(checker) {}

    QString currentVersion() const override { return checker_.currentVersion(); }

    QString availableVersion() const override {
        return checker_.updateAvailable() ? checker_.latestVersion() : QString();
    }

    void follow(QObject* context, std::function<void()> changed) override {
        QObject::connect(&checker_, &UpdateChecker::latestVersionChanged, context, changed);
        QObject::connect(&checker_, &UpdateChecker::updateAvailableChanged, context, changed);
    }

    void check(std::function<void(Outcome outcome)> done) override {
        checker_.checkForUpdate(
            [done = std::move(done)](UpdateOutcome outcome) { done(outcomeOf(outcome)); });
    }

    void openDownload() override { checker_.openDownload(); }

  private:
    UpdateChecker& checker_;
};

} // namespace

std::unique_ptr<UpdateControl> makeUpdateControl(UpdateChecker& checker) {
    return std::make_unique<CheckerControl>(checker);
}

} // namespace orv
