#pragma once

#include "SettingDeclaration.h"
#include "StoredValue.h"
#include "ThreadChecks.h"

#include <QJsonValue>
#include <QObject>
#include <QString>

#include <optional>
#include <utility>
#include <vector>

namespace orv {

class DefaultsStore;

/// The base of every setting: what is known of it without the type of its value. Lives on the main
/// thread, as everything does that is told of it.
class AnySetting : public QObject {
    Q_OBJECT

  public:
    /// Under which the value stands in the store; empty for a setting that is never kept.
    virtual const QString& key() const = 0;
    virtual Keeping keeping() const = 0;
    virtual const SettingNote& note() const = 0;

    /// The value when nothing is stored or registered, as it would stand in the store; undefined
    /// for a type that is never kept.
    virtual QJsonValue initialJson() const = 0;

    /// The registered value, if there is one.
    virtual std::optional<Registered<QJsonValue>> registered() const = 0;

    // For the owner, who calls these once and in this order.

    /// Writes every assignment to `store` from now on, unless the setting is never kept. The store
    /// outlives the setting.
    void keepIn(DefaultsStore& store);

    /// Takes the stored value over if there is one and the declaration accepts it, without telling
    /// anybody and without writing. True when it did.
    virtual bool takeStored() = 0;

    /// Writes and tells the value as an assignment of it does.
    virtual void assignAgain() = 0;

  Q_SIGNALS:
    /// A value was assigned, maybe the same as before, and has been written. Receivers are told in
    /// the order in which they connected; one may disconnect itself or others meanwhile, or assign
    /// again: then those after it are told twice, of the latest value both times.
    void assigned();

  protected:
    /// The store that assignments are written to; null for none.
    DefaultsStore* store() const { return store_; }

  private:
    DefaultsStore* store_ = nullptr;
};

/// One choice of the user: its value, published and kept.
template <typename T>
class Setting : public AnySetting {
  public:
    /// Puts itself at the end of `list`.
    Setting(std::vector<AnySetting*>& list, SettingDeclaration<T> declaration)
        : declaration_(std::move(declaration))
        , value_(declaration_.initial) {
        list.push_back(this);
    }

    const T& get() const {
        ORV_ON_MAIN();
        return value_;
    }

    /// The value when nothing is stored or registered.
    const T& initial() const { return declaration_.initial; }

    /// Stores the value, writes it to the store and then tells who watches, also when the value is
    /// the same as before.
    void set(T value) {
        ORV_ON_MAIN();
        value_ = std::move(value);
        assignAgain();
    }

    /// Calls `callback` with the value after each assignment, as long as `context` lives. See
    /// `assigned` for the order.
    template <typename Callback>
    void watch(QObject* context, Callback callback) const {
        ORV_ON_MAIN();
        connect(this, &AnySetting::assigned, context, [this, callback = std::move(callback)] {
            const T value = value_; // The callback may assign another one.
            callback(value);
        });
    }

    const QString& key() const override { return declaration_.key; }

    Keeping keeping() const override { return declaration_.keeping; }

    const SettingNote& note() const override { return declaration_.note; }

    QJsonValue initialJson() const override {
        if constexpr (Storable<T>) {
            return StoredValue<T>::json(declaration_.initial);
        } else {
            return QJsonValue::Undefined;
        }
    }

    std::optional<Registered<QJsonValue>> registered() const override {
        if constexpr (Storable<T>) {
            if (const auto& value = declaration_.registered) {
                return Registered<QJsonValue>{value->position, StoredValue<T>::json(value->value)};
            }
        }
        return std::nullopt;
    }

    bool takeStored() override {
        ORV_ON_MAIN();
        if constexpr (Storable<T>) {
            if (store() != nullptr) {
                const auto stored = StoredValue<T>::read(*store(), key());
                if (stored && declaration_.takes(*stored)) {
                    value_ = *stored;
                    return true;
                }
            }
        }
        return false;
    }

    void assignAgain() override {
        ORV_ON_MAIN();
        if constexpr (Storable<T>) {
            if (store() != nullptr) {
                StoredValue<T>::write(*store(), key(), value_);
            }
        }
        Q_EMIT assigned();
    }

  private:
    const SettingDeclaration<T> declaration_;
    T value_;
};

/// Calls `show` after each assignment of one of `settings`, as long as `context` lives.
template <typename Show>
void watchAll(const std::vector<const AnySetting*>& settings, QObject* context, const Show& show) {
    ORV_ON_MAIN();
    for (const AnySetting* setting : settings) {
        QObject::connect(setting, &AnySetting::assigned, context, show);
    }
}

} // namespace orv
