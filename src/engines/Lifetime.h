#pragma once

#include <memory>

namespace orv {

/// Lets a coroutine see, after a wait, whether the object it works for still exists. The object
/// holds this as its last member, so that it ends before the others do.
class Lifetime {
  public:
    class Observer {
      public:
        explicit Observer(const Lifetime& lifetime)
            : token_(lifetime.token_) {}

        bool ended() const { return token_.expired(); }

      private:
        std::weak_ptr<const char> token_;
    };

    Observer observe() const { return Observer(*this); }

  private:
    std::shared_ptr<const char> token_ = std::make_shared<const char>();
};

} // namespace orv
