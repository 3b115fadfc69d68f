// Static objects that outlive every user.
#pragma once

#include <new>
#include <utility>

namespace ormel {

/**
 * Holds an object and never destroys it, so that code may use it after this library's static
 * objects are destroyed. As a static in a function, it may also be used before static
 * initialisation.
 */
template <typename Object>
class NeverDestroyed {
  public:
    template <typename... Arguments>
    // cppcheck-suppress uninitMemberVar // The object is made in it.
    explicit NeverDestroyed(Arguments&&... arguments)
        : mObject(*new (mRoom) Object(std::forward<Arguments>(arguments)...)) {}
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    Object& operator*() { return mObject; }

  private:
    alignas(Object) unsigned char mRoom[sizeof(Object)];
    Object& mObject;
};

}  // namespace ormel
