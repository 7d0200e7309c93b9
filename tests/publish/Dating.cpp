// A page plug-in that gives what a page's head may say of itself: a date, and that it is to be enciphered.
#include <QBFoundation/QBFoundation.h>

namespace {

class Dating : public NSObject {
public:
    static Class *cls() {
        static const qb::Method methods[] = {qb::classMethod<"valuesForPage:body:">(&Dating::valuesForPage)};
        static Class *const self = new Class("Dating", NSObject::cls(), methods);
        return self;
    }
    Class *classObject() const override { return cls(); }

    static NSDictionary *valuesForPage(NSMutableDictionary *head, NSString *) {
        head->setObjectForKey(QBNil::value(), "template"_ns);
        return NSDictionary::dictionaryWith({
            {"date"_ns, NSCalendarDate::dateWithTimeIntervalSince1970(86400)},
            {"enciphered"_ns, "YES"_ns},
        });
    }
};

const qb::ClassRegistration registration{&Dating::cls};

} // namespace
