#include <QBFoundation/QBFoundation.h>

// The value function: what the elements are sorted by.
static id title(id element, void *) {
    return send<id>(element, "objectForKey:"_sel, id{"title"_ns});
}

// The compare function: -1, 0 or 1.
static std::int32_t byLength(id a, id b, void *) {
    std::uint32_t one = static_cast<NSString *>(a)->length();
    std::uint32_t other = static_cast<NSString *>(b)->length();
    return one < other ? -1 : one > other;
}

int main() {
    NSAutoreleasePool pool;
    NSArray *words = "Zebra zebra Öl Ofen oft Maße Masse Mast"_ns->componentsSeparatedByString(" "_ns);
    const auto print = [](NSArray *list) { OSUserIO::printLn(list->componentsJoinedByString(" "_ns)); };

    print(words->sortedArrayUsingSelector("compare:"_sel)); // by their bytes
    print(OSSorter::sorterForLanguage("de_DE"_ns)->sortArrayAscending(words));
    print(OSSorter::sorterForLanguage("de_DE"_ns)->sortArrayDescending(words));
    print(OSSorter::sorterForLanguageCompareFunction("de_DE"_ns, byLength)->sortArrayAscending(words));

    NSMutableArray *pages = NSMutableArray::array();
    for (id word : *words)
        pages->addObject(NSDictionary::dictionaryWithObjectForKey(word, "title"_ns));
    NSArray *sorted = OSSorter::sorterForLanguageValueFunction("de_DE"_ns, title)->sortArrayAscending(pages);
    OSUserIO::printLn(title(sorted->objectAtIndex(0), nullptr)->description());

    // Time zones by names of old.
    OSUserIO::printLn(OSTime::timeZoneWithName("MEZ"_ns)->name());
}
