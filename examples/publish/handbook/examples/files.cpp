#include <QBFoundation/QBFoundation.h>

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    OSUserIO::printLn(OSFilePath::stringBySimplifyingPath("/site//pages/./old/../new.html"_ns));

    // A new file in place of an old one. The directories are made.
    NSString *directory = OSFilePath::uniqueTmpFilename();
    NSString *file = directory->stringByAppendingPathComponent("shop/settings.plist"_ns);
    QBFileOutputStream::writeToFile("{ tables = 12; }"_ns, file, /*atomically=*/YES);

    QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(file, /*atomically=*/YES);
    stream->writeObject("{ tables = 14; }"_ns);
    OSUserIO::printLn(QBFileInputStream::streamWithFile(file)->readLine()); // still the old one
    stream->close();
    OSUserIO::printLn(QBFileInputStream::streamWithFile(file)->readLine());

    // A copy of a tree with a link in it, which leads into the copy.
    NSString *shop = directory->stringByAppendingPathComponent("shop"_ns);
    NSString *copy = directory->stringByAppendingPathComponent("copy"_ns);
    NSFileManager::defaultManager()->createSymbolicLinkAtPath(
        shop->stringByAppendingPathComponent("current"_ns), /*pathContent=*/file);
    OSFilePath::copyPath(shop, copy, /*renameSource=*/YES);
    NSString *link = copy->stringByAppendingPathComponent("current"_ns);
    OSUserIO::printLn(OSFilePath::symlinkTarget(link));
    OSUserIO::printLn(OSFilePath::fileAtPath(link, file) ? "another content"_ns : "the same content"_ns);

    OSFilePath::removePath(directory);
    OSUserIO::printLn(OSFilePath::fileExistsAtPath(file) ? "still there"_ns : "gone"_ns);

    // What fails says why.
    OSFilePath::makePath("/proc/no"_ns);
    OSUserIO::printLn(ERRORHANDLER->errorMessage());
}
