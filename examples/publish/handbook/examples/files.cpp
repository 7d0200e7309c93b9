#include <QBFoundation/QBFoundation.h>

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    OSUserIO::printLn(OSFilePath::stringBySimplifyingPath("/site//pages/./old/../new.html"_ns));

    NSString *directory = OSFilePath::uniqueTmpFilename();
    NSString *file =
        directory->stringByAppendingPathComponent("deep/settings.plist"_ns); // directories are made
    QBFileOutputStream::writeToFile("{ tables = 12; }"_ns, file, /*atomically=*/YES);

    QBFileOutputStream *stream = QBFileOutputStream::streamWithFile(file, /*atomically=*/YES);
    stream->writeObject("{ tables = 14; }"_ns);
    OSUserIO::printLn(QBFileInputStream::streamWithFile(file)->readLine()); // still the old one
    stream->close();
    OSUserIO::printLn(QBFileInputStream::streamWithFile(file)->readLine());

    OSFilePath::removePath(directory);
    OSUserIO::printLn(OSFilePath::fileExistsAtPath(file) ? "still there"_ns : "gone"_ns);
    OSFilePath::makePath("/proc/no"_ns);
    OSUserIO::printLn(ERRORHANDLER->errorMessage());
}
