#include <QBFoundation/QBFoundation.h>

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    NSString *text = "{ name = \"Caf\\U00e9\"; open = (mon, tue); /* not yet */ tables = 12; }"_ns;
    auto *settings = qb::castOrNil<NSDictionary>(text->propertyList());
    NSMutableDictionary *changed = NSMutableDictionary::dictionaryWithDictionary(settings);
    changed->setObjectForKey(NSNumber::numberWithInt(14), "tables"_ns);
    changed->setObjectForKey(QBNil::value(), "owner"_ns); // no value: no line

    QBPropertyListOutputStream *stream = QBPropertyListOutputStream::streamWithCapacity(256);
    stream->writeObject(changed);
    Ref<NSString> written = NSString::initWithData(stream->targetData());
    OSUserIO::printLn(written);

    "( mon,\n  tue"_ns->propertyList();
    OSUserIO::printLn(ERRORHANDLER->errorMessage());
}
