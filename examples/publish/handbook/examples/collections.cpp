#include <QBFoundation/QBFoundation.h>

static void show(NSArray *array) {
    OSUserIO::printLn(array->stringsJoinedByString(" "_ns));
}

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    // Arrays as sets: the order stays, and equal elements count once.
    NSArray *fruit = NSArray::arrayWith({"pear"_ns, "apple"_ns, "pear"_ns, "fig"_ns});
    NSArray *other = NSArray::arrayWith({"fig"_ns, "plum"_ns});
    show(fruit->uniqueArray());
    show(fruit->plus(other));
    show(fruit->minus(other));
    show(fruit->commonElementsWithArray(other));

    // Filters send each element a message. They stand behind each other, and nothing happens before an
    // object is wanted.
    show(fruit->selectWithSelector("hasPrefix:"_sel, "p"_ns));
    QBEnumFilter *loud = QBEnumFilter::filterWithMessageOfClass("uppercaseString"_sel);
    loud->setSource(fruit->objectEnumeratorFilteredWith(QBEnumRejectFilter::equalFilter("fig"_ns)));
    show(loud->allObjects());

    // Dictionaries, read with defaults.
    NSDictionary *shop = NSDictionary::dictWithKeyValues("name"_ns, "Corner"_ns, "logo"_ns, "logo.png"_ns);
    OSUserIO::printLn(shop->objectForKey("city"_ns, "nowhere"_ns)->stringValue());
    OSUserIO::printLn(shop->pathForKey("logo"_ns, nullptr, "/srv/shop"_ns));
    OSUserIO::printLn(shop->pathForKey("style"_ns, "style.css"_ns, "/srv/shop"_ns));

    // Sorted by a key, and the other way round.
    NSArray *staff = NSArray::arrayWith({NSDictionary::dictWithKeyValues("name"_ns, "bob"_ns),
                                         NSDictionary::dictWithKeyValues("name"_ns, "Ada"_ns),
                                         NSDictionary::dictWithKeyValues("name"_ns, "Cy"_ns)});
    for (NSString *key : {"name"_ns, "name.REVERSE"_ns})
        show(staff->caseInsensitiveSortedArrayByKey(key)->filterWithSelector("objectForKey:"_sel, "name"_ns));

    // Values inside values, by dotted keys; numbers lead into arrays.
    NSMutableDictionary *settings = NSMutableDictionary::dictionary();
    settings->setObjectForKey(shop, "shop"_ns);
    settings->setObjectForKey(staff, "staff"_ns);
    settings->setDeepObject("Market"_ns, "shop.name"_ns);
    OSUserIO::printLn(settings->deepObjectForKey("shop.name"_ns)->stringValue());
    OSUserIO::printLn(settings->deepObjectForKey("staff.1.name"_ns)->stringValue());
    settings->setDeepObject("Main Street"_ns, "address.street"_ns); // there is no address
    OSUserIO::printLn(ERRORHANDLER->errorMessage());

    // Paths as values.
    QBPath *page = QBPath::qbPathWithString("/shop/fruit/pear.html"_ns);
    OSUserIO::printLn(page->pathByReplacingExtension("txt"_ns)->stringValue());
    OSUserIO::printLn(page->relativePathTo("/shop/style.css"_ns->asQbPath())->stringValue());
}
