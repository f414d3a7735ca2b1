#pragma once
#include <CoreFoundation/CoreFoundation.h>
#include <utility>

namespace orlo::mac {

// The one ownership rule of the macOS backend for Core Foundation objects: whatever a Create
// or Copy function hands back is adopted by a CFRef at once, which releases it; what a Get
// function hands back is borrowed, used on the spot and never released. Objective-C objects
// are left to automatic reference counting; a Core Foundation object crosses over to
// Objective-C only with CFBridgingRelease (ownership moves) or __bridge (borrowed).
template <typename T>
class CFRef {
public:
    CFRef() = default;
    // Adopts a reference the caller owns (nullptr is fine).
    explicit CFRef(T object) : object_(object) {}
    CFRef(const CFRef&) = delete;
    CFRef& operator=(const CFRef&) = delete;
    CFRef(CFRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    CFRef& operator=(CFRef&& other) noexcept
    {
        if (this != &other) reset(std::exchange(other.object_, nullptr));
        return *this;
    }
    ~CFRef() { reset(); }

    // Takes one more reference on a borrowed object.
    static CFRef retained(T object)
    {
        if (object) CFRetain(object);
        return CFRef(object);
    }

    T get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    // For Copy functions that answer through an out parameter.
    T* out()
    {
        reset();
        return &object_;
    }
    void reset(T object = nullptr)
    {
        if (object_) CFRelease(object_);
        object_ = object;
    }
    // Hands the reference to the caller, who releases it.
    T release() { return std::exchange(object_, nullptr); }

private:
    T object_ = nullptr;
};

}  // namespace orlo::mac
