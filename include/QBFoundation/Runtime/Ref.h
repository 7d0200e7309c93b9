// Owning reference to an object.
#ifndef QBFOUNDATION_RUNTIME_REF_H
#define QBFOUNDATION_RUNTIME_REF_H

#include <cstddef>
#include <type_traits>
#include <utility>

/// Owns one reference to a `T`, or is null.
///
/// Fields hold their objects in it, and initialisers and copies return it. Constructed or assigned from a
/// plain pointer it retains; `adopt` takes over a reference that somebody already owns.
template <class T>
class Ref {
public:
    Ref() noexcept = default;
    Ref(std::nullptr_t) noexcept {}
    Ref(T *object) : object_(object) { retain(); }
    Ref(const Ref &other) : object_(other.object_) { retain(); }
    Ref(Ref &&other) noexcept : object_(other.detach()) {}
    template <class U, class = std::enable_if_t<std::is_convertible_v<U *, T *>>>
    Ref(const Ref<U> &other) : object_(other.get()) {
        retain();
    }
    template <class U, class = std::enable_if_t<std::is_convertible_v<U *, T *>>>
    Ref(Ref<U> &&other) noexcept : object_(other.detach()) {}
    ~Ref() {
        if (object_)
            object_->release();
    }

    Ref &operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    /// Takes over a reference that the caller owns.
    [[nodiscard]] static Ref adopt(T *object) noexcept {
        Ref reference;
        reference.object_ = object;
        return reference;
    }

    /// Hands the reference to the caller, who releases it; this is null afterwards.
    [[nodiscard]] T *detach() noexcept { return std::exchange(object_, nullptr); }

    /// Hands the reference to the current pool and returns the object; this is null afterwards.
    T *autorelease() {
        T *object = detach();
        if (object)
            object->autorelease();
        return object;
    }

    T *get() const noexcept { return object_; }
    T *operator->() const noexcept { return object_; }
    T &operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// A named reference serves as a plain pointer. A temporary one does not: its object would be gone at
    /// once.
    operator T *() const &noexcept { return object_; }
    operator T *() const && = delete;

    /// Not a distance, as between pointers: then two references in braces would be taken for a range.
    friend void operator-(const Ref &, const Ref &) = delete;

private:
    void retain() {
        if (object_)
            object_->retain();
    }

    T *object_ = nullptr;
};

// Templates for any two classes: they take the operands as they are, so that no conversion to a pointer
// competes.
template <class T, class U>
bool operator==(const Ref<T> &a, const Ref<U> &b) noexcept {
    return a.get() == b.get();
}
template <class T, class U>
bool operator==(const Ref<T> &a, U *b) noexcept {
    return a.get() == b;
}
template <class T>
bool operator==(const Ref<T> &a, std::nullptr_t) noexcept {
    return a.get() == nullptr;
}

#endif
