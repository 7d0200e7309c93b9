// Names for temporary files.
#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <QBFoundation/Foundation/NSProcessInfo.h>
#include <QBFoundation/Foundation/NSString.h>

NSString *OSFilePath::tmpDir() {
    return "/var/tmp"_ns;
}

NSString *OSFilePath::uniqueTmpFilename() {
    return uniqueFilenameWithPrefix(nullptr, tmpDir());
}

NSString *OSFilePath::uniqueFilenameWithPrefix(NSString *prefix, NSString *dir) {
    NSString *const unique = NSProcessInfo::processInfo()->globallyUniqueString()->asLegalNameString();
    if (!prefix)
        prefix = NSString::string();
    if (!dir || !dir->containsData())
        return NSString::stringWithRestrictedFormat("%s%s", prefix, unique);
    return NSString::stringWithRestrictedFormat("%s%c%s%s", dir, pathSeparator(), prefix, unique);
}
