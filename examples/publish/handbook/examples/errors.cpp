#include <QBFoundation/QBFoundation.h>

/// The library's texts, and one of this program's own.
class Errors : public QBErrorCatalogue {
public:
    NSString *formatStringForErrorId(int error, NSString *withDefaultFormat) override {
        if (error == 910042)
            return "The shelf '%s' is full (%d books)."_ns;
        return QBErrorCatalogue::formatStringForErrorId(error, withDefaultFormat);
    }
};

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = new Errors;

    ERRORHANDLER->raiseErrorInFile("examples/errors", __LINE__, 910042, "poetry", 120);
    OSFilePath::renamePath("/no/such/file"_ns, "/no/such/place"_ns);
    OSUserIO::printLn(ERRORHANDLER->errorStackMessagesStringWithIndent("- "_ns));

    {
        const qb::SavedErrors aside(qb::SavedErrors::kDiscard);
        "{ broken"_ns->propertyList();
        OSUserIO::printLn(ERRORHANDLER->errorMessage());
    }
    OSUserIO::printLn(NSString::stringWithFormat("%u errors are left"_ns, ERRORHANDLER->errorIds()->count()));
}
