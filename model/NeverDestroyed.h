// Static objects that outlive every user.
#pragma once

#include <new>
#include <utility>

namespace ormel {

/**
 * Holds a static object in place and never destroys it, so that it serves code that runs after this
 * library's static objects end. Make one in a function, as a static, so that it serves code that
 * runs before they begin as well.
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
