#include <QBFoundation/OSAdaptor/OSFilePath.h>

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

Class *OSFilePath::cls() {
    using Path = OSFilePath;
    static const qb::Method methods[] = {
        qb::classMethod<"pathSeparator">(&Path::pathSeparator),
        qb::classMethod<"pathSeparatorString">(&Path::pathSeparatorString),
        qb::classMethod<"isPathSeparator:">(&Path::isPathSeparator),
        qb::classMethod<"stringBySimplifyingPath:">(&Path::stringBySimplifyingPath),
        qb::classMethod<"stringByNormalizingAndSimplifyingPath:">(
            &Path::stringByNormalizingAndSimplifyingPath),
        qb::classMethod<"stringByNormalizingPath:">(&Path::stringByNormalizingPath),
        qb::classMethod<"stringByStandardizingPath:">(&Path::stringByStandardizingPath),
        qb::classMethod<"shortPathForPath:">(&Path::shortPathForPath),
        qb::classMethod<"completeExecutable:">(&Path::completeExecutable),
        qb::classMethod<"isAbsolutePath:">(&Path::isAbsolutePath),
        qb::classMethod<"firstPathComponentOf:">(&Path::firstPathComponentOf),
        qb::classMethod<"stringByDeletingFirstPathComponentOf:">(&Path::stringByDeletingFirstPathComponentOf),
        qb::classMethod<"sharedLibExtension">(&Path::sharedLibExtension),
        qb::classMethod<"tmpDir">(&Path::tmpDir),
        qb::classMethod<"uniqueTmpFilename">(&Path::uniqueTmpFilename),
        qb::classMethod<"uniqueFilenameWithPrefix:inDir:">(&Path::uniqueFilenameWithPrefix),
        qb::classMethod<"fileInfo:atPath:">(&Path::fileInfo),
        qb::classMethod<"fileExistsAtPath:", BOOL(NSString *)>(&Path::fileExistsAtPath),
        qb::classMethod<"fileExistsAtPath:isDirectory:", BOOL(NSString *, BOOL *)>(&Path::fileExistsAtPath),
        qb::classMethod<"directoryExistsAtPath:">(&Path::directoryExistsAtPath),
        qb::classMethod<"fileSizeAtPath:">(&Path::fileSizeAtPath),
        qb::classMethod<"fileContainsDataAtPath:">(&Path::fileContainsDataAtPath),
        qb::classMethod<"symlinkTarget:">(&Path::symlinkTarget),
        qb::classMethod<"fileAtPath:differsFromFileAtPath:">(&Path::fileAtPath),
        qb::classMethod<"getcwd">(&Path::getcwd),
        qb::classMethod<"glob:", NSArray *(NSString *)>(&Path::glob),
        qb::classMethod<"glob:inDir:", NSArray *(NSString *, NSString *)>(&Path::glob),
        qb::classMethod<"makePath:">(&Path::makePath),
        qb::classMethod<"removePath:", void(NSString *)>(&Path::removePath),
        qb::classMethod<"removePath:atomicallyWithTmpDir:", void(NSString *, NSString *)>(&Path::removePath),
        qb::classMethod<"_removePath:">(&Path::_removePath),
        qb::classMethod<"renamePath:to:">(&Path::renamePath),
        qb::classMethod<"touchFileAtPath:", void(NSString *)>(&Path::touchFileAtPath),
        qb::classMethod<"touchFileAtPath:mtime:", void(NSString *, std::int64_t)>(&Path::touchFileAtPath),
        qb::classMethod<"symlink:toTargetDir:">(&Path::symlink),
        qb::classMethod<"chdir:">(&Path::chdir),
        qb::classMethod<"openFile:mode:">(&Path::openFile),
        qb::classMethod<"closeFile:">(&Path::closeFile),
        qb::classMethod<"copyPath:toPath:", void(NSString *, NSString *)>(&Path::copyPath),
        qb::classMethod<"copyPath:toPath:renameSource:", void(NSString *, NSString *, BOOL)>(&Path::copyPath),
    };
    static Class *const self = new Class("OSFilePath", OSObject::cls(), methods);
    return self;
}
