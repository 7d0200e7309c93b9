// A command that pages go through before they are written.
#ifndef PUBLISH_PAGEFILTER_H
#define PUBLISH_PAGEFILTER_H

#include <QBFoundation/QBFoundation.h>

namespace publish {

/// Runs the user's command for a page at a time, by the shell: the page comes on its standard input, and what
/// it writes to standard output is the new page. PUBLISH_PAGE in its environment is the page's path.
class PageFilter {
public:
    /// `directory`: where the files between here and the command stand; `command`: nil leaves pages as they
    /// are.
    PageFilter(NSString *command, NSString *directory);

    /// Returns the page that the command made; nil, with an error raised, when it ended with another status
    /// than 0: 100227, with the beginning of what it wrote to standard error; or 910033 when a signal
    /// ended the shell.
    NSData *filtered(NSString *path, NSData *page) const;

private:
    Ref<NSString> command_;
    Ref<NSString> input_;
    Ref<NSString> output_;
    Ref<NSString> errors_;
    Ref<NSString> mark_; // is there when the command has done its work
};

} // namespace publish

#endif
