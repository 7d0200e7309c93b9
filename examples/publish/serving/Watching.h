// Seeing that a site's source has changed.
#ifndef PUBLISH_SERVING_WATCHING_H
#define PUBLISH_SERVING_WATCHING_H

#include <QBFoundation/QBFoundation.h>

namespace publish::serving {

/// What stands below a directory, by the names, sizes and times of its files.
class Watch {
public:
    explicit Watch(NSString *directory) : directory_(directory), state_(state()) {}

    /// Whether it differs from what stood there at the last question.
    bool hasChanged();

private:
    NSString *state() const;

    Ref<NSString> directory_;
    Ref<NSString> state_;
};

} // namespace publish::serving

#endif
