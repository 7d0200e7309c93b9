// Seeing that a site's source has changed.
#ifndef PUBLISH_SERVING_WATCHING_H
#define PUBLISH_SERVING_WATCHING_H

#include <QBFoundation/QBFoundation.h>

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace publish::serving {

/// Files, and what stands below directories, by names, sizes, times and rights. Links count with the file
/// that they lead to, and what is watched may be a link.
class Watch {
public:
    /// `target` and `log`: what this program writes itself, wherever it stands, which does not count; nor
    /// does any file that it has open for writing. `log` is nil for none.
    Watch(NSString *directory, NSString *target, NSString *log);

    /// Watches a directory or file too, unless it is watched with another. It counts as changed once, because
    /// it may have been read already. Returns whether it is watched only now.
    bool add(NSString *path);
    /// Watches the directories too that links below a directory lead to, and links below those.
    void addLinkedFrom(NSString *directory);
    /// Whether anything differs from what stood there at the last question.
    bool hasChanged();

private:
    /// Real paths.
    using Places = std::set<std::string, std::less<>>;
    /// The numbers of a file's file system and of the file.
    using Identity = std::pair<std::uint64_t, std::uint64_t>;

    static bool isWithinAny(const Places &places, std::string_view place);
    void addLinkedFrom(NSString *directory, Places &seen);
    NSString *stateOf(NSString *path, const std::string &real) const;
    void noteOwn();
    void noteOpen();
    bool isOwn(NSDictionary *attributes) const;
    template <class Visit>
    void walk(NSString *place, Visit visit) const;

    Ref<NSString> target_, log_;
    std::vector<Identity> own_;                                     // as last seen
    Ref<NSMutableDictionary> states_ = NSMutableDictionary::init(); // under the paths
    Places places_;                                                 // of what is watched, as last seen
};

} // namespace publish::serving

#endif
