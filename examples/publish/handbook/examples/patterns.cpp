#include <QBFoundation/QBFoundation.h>

int main() {
    NSAutoreleasePool pool;
    ERRORHANDLER = QBErrorCatalogue::init().detach();

    // Whether there is a match anywhere, and in the whole text.
    for (NSString *text : {"4711"_ns, "article 4711"_ns, "none"_ns})
        OSUserIO::printLn(NSString::stringWithFormat("%@: %d %d"_ns, text, text->matches("[0-9]+"_ns),
                                                     text->matches("^[0-9]+$"_ns)));

    // Where it is, and what the groups are.
    auto *link = qb::castOrNil<QBRegularExpression>(
        QBRegularExpression::regularExpressionWithPattern("([a-z]+)://([^/ ]+)(/[^ ]*)?"_ns));
    NSString *text = "From http://example.org/a to https://example.net"_ns;
    for (QBRegularExpressionMatchObject *found = link->search(text); found;
         found = link->search(text, found->endOfGroup(0)))
        OSUserIO::printLn(NSString::stringWithFormat("%d to %d: %@ of %@, '%@'"_ns, found->startOfGroup(0),
                                                     found->endOfGroup(0), found->group(1), found->group(2),
                                                     found->group(3)));
    OSUserIO::printLn(link->match(text) ? "all of it"_ns : "not all of it"_ns);

    // Flags are the platform's.
    auto *name = qb::castOrNil<QBRegularExpression>(
        QBRegularExpression::regularExpressionWithPattern("^ada$"_ns, REG_ICASE));
    OSUserIO::printLn(name->matches("ADA"_ns) ? "in any case"_ns : "in this case only"_ns);

    // What is malformed or would be too much is an error, once.
    for (NSString *pattern : {"(a"_ns, "((a{200}){200}){200}"_ns, "(a"_ns}) {
        const id made = QBRegularExpression::regularExpressionWithPattern(pattern);
        OSUserIO::printLn(ERRORHANDLER->errorState() == ERRORSTATE_OK ? "no new error"_ns
                                                                      : ERRORHANDLER->errorMessage());
        OSUserIO::printLn(IsNil(made) ? "no pattern"_ns : "a pattern"_ns);
        ERRORHANDLER->clearErrorStack();
    }
}
