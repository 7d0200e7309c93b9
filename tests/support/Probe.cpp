#include "support/Probe.h"

#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/Runtime/MethodTable.h>

qb::MethodTables Probe::methods() {
    static const qb::Method table[] = {
        qb::method<"object">(&Probe::object),
        qb::method<"kind">(&Probe::kind),
        qb::method<"made">(&Probe::made),
        qb::method<"truth">(&Probe::truth),
        qb::method<"flag">(&Probe::flag),
        qb::method<"letter">(&Probe::letter),
        qb::method<"big">(&Probe::big),
        qb::method<"real">(&Probe::real),
        qb::method<"text">(&Probe::text),
        qb::method<"place">(&Probe::place),
        qb::method<"message">(&Probe::message),
        qb::method<"range">(&Probe::range),
        qb::method<"nothing">(&Probe::nothing),
        qb::method<"takes:">(&Probe::takes),
        qb::method<"takesText:">(&Probe::takesText),
        qb::method<"takesClass:">(&Probe::takesClass),
        qb::method<"takesPointer:">(&Probe::takesPointer),
        qb::method<"takesNumber:">(&Probe::takesNumber),
        qb::method<"takes:two:">(&Probe::takesTwo),
        qb::method<"takes:two:three:">(&Probe::takesThree),
        qb::method<"takes:two:three:four:">(&Probe::takesFour),
        qb::method<"takesMore:">(&Probe::takesMore),
        qb::method<"raise">(&Probe::raise),
        qb::method<"act">(&Probe::act),
    };
    return table;
}

qb::MethodTables OtherProbe::methods() {
    static const qb::Method table[] = {qb::method<"other">(&OtherProbe::other)};
    return table;
}

NSArray *Probe::probes(std::initializer_list<const char *> names) {
    NSMutableArray *const array = NSMutableArray::array();
    for (const char *name : names)
        array->addObject(Ref<Probe>::adopt(new Probe(name)).get());
    return array;
}

void Probe::raise() const {
    if (isOn())
        ERRORHANDLER->raiseErrorInFile("tests/Probe", __LINE__, 990002, name_.get());
}
