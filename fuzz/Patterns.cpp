// Compiles any pattern and searches any text with it. The first line is the pattern, the rest the text.
#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBRegularExpression.h>

#include "support/Require.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

// Long texts and repeats in each other keep the matcher busy for hours, which is no fault of ours.
constexpr std::size_t kLongestText = 64;

void requirePossibleAnswers(QBRegularExpression *expression, NSString *text) {
    expression->matches(text); // with anchors the C library may say something else here
    require(!qb::isErrorPending(), "asking is no error");
    QBRegularExpressionMatchObject *const found = expression->search(text);
    if (qb::isErrorPending()) {
        require(!found, "what fails has found nothing");
        ERRORHANDLER->clearErrorStack(); // its groups can't be found
        return;
    }
    require(!expression->match(text) || found, "a match of the whole is a match");
    if (!found)
        return;
    require(found->startOfGroup(0) >= 0, "it begins in the text");
    require(found->endOfGroup(0) <= static_cast<std::int32_t>(text->cStringLength()), "and ends in it");
    for (std::uint32_t group = 0; group < found->subGroups()->count(); ++group) {
        require(found->startOfGroup(group) <= found->endOfGroup(group), "a group ends behind its beginning");
        require(found->group(group)->cStringLength() <= text->cStringLength(), "a group is part of the text");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static QBErrorHandler *const handler = ERRORHANDLER = QBErrorHandler::init().detach();
    const NSAutoreleasePool pool;
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const std::size_t line = input.find('\n');
    NSString *const pattern = NSString::stringWith(input.substr(0, line));
    const std::string_view text =
        line == std::string_view::npos ? std::string_view() : input.substr(line + 1);
    const Ref<QBRegularExpression> expression = QBRegularExpression::initWithPattern(pattern, 0);
    require((handler->errorState() == ERRORSTATE_OK) == (expression != nullptr), "what fails is an error");
    handler->clearErrorStack();
    if (expression)
        requirePossibleAnswers(expression, NSString::stringWith(text.substr(0, kLongestText)));
    require(handler->errorState() == ERRORSTATE_OK, "nor is searching");
    return 0;
}
