#pragma once

#include <QtGlobal>

#include <mutex>
#include <vector>

namespace orv {

/// A member that makes its owner the object that the class's `shared()` gives, for as long as it
/// lives. The object has it as its last member, so that it is found once its other members are made
/// and no more when they go.
///
/// The running program makes one object of such a class. Where there are several, as in tests, the
/// newest is found; when that goes, the newest of the others is found again.
///
/// All of it may be called from any thread. That the object outlives the use of it is up to whoever
/// asks.
template <typename Object>
class SharedInstance {
  public:
    explicit SharedInstance(Object& object)
        : object_(&object) {
        Places& places = allPlaces();
        const std::lock_guard lock(places.mutex);
        places.objects.push_back(object_);
    }

    ~SharedInstance() {
        Places& places = allPlaces();
        const std::lock_guard lock(places.mutex);
        std::erase(places.objects, object_);
    }

    SharedInstance(const SharedInstance&) = delete;
    SharedInstance& operator=(const SharedInstance&) = delete;

    /// The newest object there is. Asking while there is none is a programming error and ends the
    /// program.
    static Object& get() {
        Places& places = allPlaces();
        const std::lock_guard lock(places.mutex);
        if (places.objects.empty()) {
            qFatal("A shared instance was asked for while there is none.");
        }
        return *places.objects.back();
    }

  private:
    struct Places {
        std::mutex mutex;
        std::vector<Object*> objects; ///< Under the lock; oldest first.
    };

    static Places& allPlaces() {
        static Places places;
        return places;
    }

    Object* object_;
};

} // namespace orv
