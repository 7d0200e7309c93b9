#include "PageFilter.h"

#include "Files.h"
#include "Messages.h"

namespace publish {

namespace {

// By files, so that no order of reading and writing makes the command wait for us. Only the beginning of its
// error text is passed on: a pipe that nobody reads yet takes no more. The mark tells a command that did its
// work from a shell that a signal ended, which has no exit status.
NSString *script() {
    return "if sh -c \"$5\" <\"$1\" >\"$2\" 2>\"$3\"; then : >\"$4\"; "
           "else status=$?; head -c 4096 \"$3\" >&2; exit $status; fi"_ns;
}

} // namespace

// The names are this run's alone, for the command of one that was killed goes on.
PageFilter::PageFilter(NSString *command, NSString *directory) : command_(command) {
    NSString *const start = directory->stringByAppendingPathComponent(IdCreator::createId());
    input_ = start->stringByAppendingString(".in"_ns);
    output_ = start->stringByAppendingString(".out"_ns);
    errors_ = start->stringByAppendingString(".err"_ns);
    mark_ = start->stringByAppendingString(".done"_ns);
}

NSData *PageFilter::filtered(NSString *path, NSData *page) const {
    if (!command_)
        return page;
    // What the command for an earlier page left running still writes to its files, which have no name then.
    for (NSString *file : {input_.get(), output_.get(), errors_.get(), mark_.get()})
        OSFilePath::removePath(file);
    QBFileOutputStream::writeToFile(page, input_, NO);
    if (hasFailed())
        return nullptr;
    OSProcess::runExternalCmd(
        "/bin/sh"_ns,
        NSArray::arrayWithObjects("-c"_ns, script(), "publish"_ns, input_, output_, errors_, mark_, command_),
        NSDictionary::dictionaryWithObjectForKey(path, "PUBLISH_PAGE"_ns));
    if (!hasFailed() && kindOf(mark_) == Kind::nothing)
        fail(__LINE__, kErrorFilterCutOff, path);
    return hasFailed() ? nullptr : readBytes(output_);
}

} // namespace publish
