#pragma once

#include <QString>

#include <functional>
#include <utility>

namespace orv {

/// One published value of a settings object. `set` stores the value and then runs what its owner
/// has attached (write to the store, side effects, publication), also when the value is the same.
template <typename T>
class Setting {
  public:
    using Assigned = std::function<void(const T& value)>;

    explicit Setting(T initial)
        : value_(std::move(initial)) {}

    const T& get() const { return value_; }

    void set(T value) {
        value_ = std::move(value);
        if (assigned_) {
            assigned_(value_);
        }
    }

    /// Attaches what an assignment brings with it. Called once, by the owner.
    void onAssigned(Assigned assigned) { assigned_ = std::move(assigned); }

    /// The field under which a change is told.
    const QString& field() const { return field_; }

    void setField(const QString& field) { field_ = field; }

  private:
    QString field_;
    T value_;
    Assigned assigned_;
};

} // namespace orv
