// Seeing that a site's source has changed.
#ifndef PUBLISH_SERVING_WATCHING_H
#define PUBLISH_SERVING_WATCHING_H

#include <QBFoundation/QBFoundation.h>

#include <functional>
#include <set>
#include <string>
#include <string_view>

namespace publish::serving {

/// Files, and what stands below directories, by names, sizes, times and rights. Links count with the file
/// that they lead to, and what is watched may be a link.
class Watch {
public:
    /// `log`: the file that this program writes to, wherever it stands, which does not count; nil for none.
    Watch(NSString *directory, NSString *log);

    /// Watches a directory or file too, unless it is watched with another. It counts as changed once, because
    /// it may have been read already. Returns whether it is watched only now.
    bool add(NSString *path);
    /// Watches the directories too that links below a directory lead to, and links below those.
    void addLinkedFrom(NSString *directory);
    /// Whether anything differs from what stood there at the last question.
    bool hasChanged();

private:
    bool isWatched(std::string_view place) const;
    NSString *stateOf(NSString *path, const std::string &real) const;
    bool isLog(NSDictionary *attributes) const;

    Ref<NSDictionary> log_;                                         // its attributes
    Ref<NSMutableDictionary> states_ = NSMutableDictionary::init(); // under the paths
    std::set<std::string, std::less<>> places_;                     // the real paths, as they were last seen
};

} // namespace publish::serving

#endif
