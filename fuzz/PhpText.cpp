// Writes any tree as PHP text, and reads that again by the grammar.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/QBErrorHandler.h>

#include "support/Require.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

// The tree with numbers for the strings that are texts of numbers.
id withNumbers(id value) {
    if (auto *const array = qb::castOrNil<NSArray>(value)) {
        NSMutableArray *const result = NSMutableArray::array();
        for (id element : *array)
            result->addObject(withNumbers(element));
        return result;
    }
    if (auto *const dictionary = qb::castOrNil<NSDictionary>(value)) {
        NSMutableDictionary *const result = NSMutableDictionary::dictionary();
        for (const auto &[key, object] : *dictionary)
            result->setObjectForKey(withNumbers(object), withNumbers(key));
        return result;
    }
    NSNumber *const number = value->asNumber();
    return number ? number : value;
}

// Takes the text apart along the tree that it is of.
class Reader {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    bool reads(id value) {
        if (auto *const array = qb::castOrNil<NSArray>(value))
            return readsContainer(*array, [this](id element) { return reads(element); });
        if (auto *const dictionary = qb::castOrNil<NSDictionary>(value))
            return readsContainer(*dictionary, [this](const NSDictionary::Pair &entry) {
                return reads(entry.first) && skips(" => ") && reads(entry.second);
            });
        if (auto *const number = qb::castOrNil<NSNumber>(value))
            return skips(number->stringValue()->view());
        return skips("not implemented correctly");
    }
    bool isAtEnd() const { return rest_.empty(); }

private:
    template <class Container, class Reads>
    bool readsContainer(const Container &container, Reads readsOne) {
        bool isFirst = true;
        if (!skips("array("))
            return false;
        for (const auto &element : container) {
            if (!(isFirst || skips(", ")) || !readsOne(element))
                return false;
            isFirst = false;
        }
        return skips(")");
    }

    bool skips(std::string_view expected) {
        if (!rest_.starts_with(expected))
            return false;
        rest_.remove_prefix(expected.size());
        return true;
    }

    std::string_view rest_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = ERRORHANDLER = QBErrorHandler::init().detach();
    const NSAutoreleasePool pool;
    const id read = NSString::stringWith({reinterpret_cast<const char *>(data), size})->propertyList();
    handler->clearErrorStack();
    if (!read)
        return 0;
    const id value = withNumbers(read);
    NSString *const text = value->asPhpString();
    require((text != nullptr) == (handler->errorState() == ERRORSTATE_OK), "a text or an error");
    handler->clearErrorStack();
    if (!text)
        return 0;
    Reader reader(text->view());
    require(reader.reads(value) && reader.isAtEnd(), "the text is that of the tree");
    return 0;
}
