// Objects that are kept for the time of messages.
#ifndef QB_FOUNDATION_KEPT_H
#define QB_FOUNDATION_KEPT_H

#include <QBFoundation/Foundation/NSObject.h>

#include <new>

namespace qb {

/// Keeps an object for the time of messages, which may take it out of the collection that it is from; when
/// they have, until the end of the pool. Leaving its scope destroys nothing, so that what was found there
/// stays as it was.
class Kept {
public:
    /// nil keeps nothing.
    explicit Kept(NSObject *object) : object_(object) {
        if (object_)
            object_->retain();
    }
    /// Takes over the reference.
    explicit Kept(Ref<NSObject> &&object) : object_(object.detach()) {}
    ~Kept() { leave(); }
    Kept(const Kept &) = delete;
    Kept &operator=(const Kept &) = delete;

    /// Keeps `object`, which is not nil, from now on, and not the one before it.
    void change(NSObject *object) {
        if (object == object_)
            return;
        object->retain();
        leave();
        object_ = object;
    }

    NSObject *get() const { return object_; }

private:
    void leave() noexcept {
        if (!object_)
            return;
        if (object_->retainCount() == 1) [[unlikely]]
            leaveToPool();
        else
            object_->release();
    }
    void leaveToPool() noexcept {
        object_->retain(); // because a pool without memory releases what it is handed
        try {
            object_->autorelease();
            object_->release();
        } catch (const std::bad_alloc &) { // then it lives for ever
        }
    }

    NSObject *object_;
};

} // namespace qb

#endif
