#include "Messages.h"

namespace publish {

NSString *shown(NSString *text) {
    return !text ? text : text->stringByReplacingSubstring("\0"_ns, "\\0"_ns);
}

NSString *ErrorHandler::formatStringForErrorId(int error, NSString *withDefaultFormat) {
    switch (error) {
    case kErrorUsage:
        return "%s (try --help)"_ns;
    case kErrorMissingKey:
        return "%s:%d: there is no value for '%s'."_ns;
    case kErrorUnknownTemplate:
        return "%s:%d: there is no template '%s'."_ns;
    case kErrorTemplateLoop:
        return "%s:%d: the template '%s' includes itself."_ns;
    case kErrorMalformedTemplate:
        return "%s:%d: %s."_ns;
    case kErrorNoHead:
        return "%s:1: a page begins with a property list in braces, which a line of '---' ends."_ns;
    case kErrorNotUtf8:
        return "%s:%d: the text is not valid UTF-8 at byte %d: behind \"%s\" stands \"%s\"."_ns;
    case kErrorNotAList:
        return "%s:%d: '%s' is no list."_ns;
    case kErrorBusy:
        return "Another run is writing to '%s'."_ns;
    case kErrorInterrupted:
        return "The run was interrupted; '%s' is as it was."_ns;
    case kErrorWrittenTwice:
        return "'%s' would be written twice."_ns;
    case kErrorUnsafePath:
        return "%s: '%s' is no path inside of a site."_ns;
    case kErrorDirectoryUnreadable:
        return "The directory '%s' can't be read."_ns;
    case kErrorMalformedFile:
        return "In '%s':"_ns;
    case kErrorInTheWay:
        return "'%s' is in the way of the site."_ns;
    case kErrorNotApart:
        return "The site '%s' and the directory '%s' that it goes to may not contain one another."_ns;
    case kErrorNotAFile:
        return "'%s' is no plain file."_ns;
    case kErrorNotADictionary:
        return "%s: %s is no dictionary."_ns;
    case kErrorUnfinished:
        return "The new site in '%s' is not complete yet; the next run completes it."_ns;
    case kErrorNotASetting:
        return "%s: the setting '%s' can't be replaced."_ns;
    case kErrorNoSmallImage:
        return "'%s' is no image of at most %d bytes that is known by its extension."_ns;
    case kErrorNotSortable:
        return "%s:%d: '%s' has elements without keys to sort by."_ns;
    case kErrorNoDate:
        return "%s: '%s' is no date."_ns;
    case kErrorNoAddress:
        return "%s: '%s' is no address that a site can have."_ns;
    case kErrorNoPlugin:
        return "'%s' is no page plug-in: it has no class '%s' that answers valuesForPage:body:."_ns;
    case kErrorThrown:
        return "The run was ended by an exception: %s"_ns;
    case kErrorNoKey:
        return "The file '%s' holds no key."_ns;
    case kErrorKeyNeeded:
        return "There is no key for '%s': --key-file names it."_ns;
    case kErrorNotDeciphered:
        return "'%s' is damaged or was enciphered with another key."_ns;
    case kErrorFilterCutOff:
        return "%s: the filter was ended before it was done."_ns;
    default:
        return QBErrorCatalogue::formatStringForErrorId(error, withDefaultFormat);
    }
}

} // namespace publish
