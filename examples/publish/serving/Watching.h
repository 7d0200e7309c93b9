// Seeing that a site's source has changed.
#ifndef PUBLISH_SERVING_WATCHING_H
#define PUBLISH_SERVING_WATCHING_H

#include <QBFoundation/QBFoundation.h>

namespace publish::serving {

/// What stands below directories, by the names, sizes and times of their files. Links count with what they
/// lead to, and directories may be links.
class Watch {
public:
    explicit Watch(NSString *directory) { states_->setObjectForKey(stateOf(directory), directory); }

    /// Watches a directory too, unless it is watched with another. It counts as changed once, because it may
    /// have been read already.
    void add(NSString *directory);
    /// Whether anything differs from what stood there at the last question.
    bool hasChanged();

private:
    static NSString *stateOf(NSString *directory);

    Ref<NSMutableDictionary> states_ = NSMutableDictionary::init(); // under the directories' paths
};

} // namespace publish::serving

#endif
