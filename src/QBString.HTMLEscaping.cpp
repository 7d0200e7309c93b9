#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include "Foundation/Kept.h"
#include "Foundation/NSString.Tables.h"
#include "Text/Html.h"
#include "Text/Room.h"

#include <algorithm>
#include <string>

namespace {

unsigned flagsOf(BOOL lt, BOOL gt, BOOL amp, BOOL quot) {
    return (lt ? qb::text::kHtmlLt : 0U) | (gt ? qb::text::kHtmlGt : 0U) | (amp ? qb::text::kHtmlAmp : 0U) |
           (quot ? qb::text::kHtmlQuot : 0U);
}

// Escapes the parts of the text that `skip` leaves; the parts that it skips stay as they are.
class SkippingEscaper {
public:
    SkippingEscaper(NSString *text, unsigned flags, NSString::SkipFunction skip, char skipCharacter)
        : position_(text->cString()), end_(position_ + text->cStringLength()),
          endForSkip_(position_ + text->length()), flags_(flags), skip_(skip), skipCharacter_(skipCharacter) {
    }

    std::string escaped() {
        while (position_ != end_) {
            const char *const stop = std::find(position_, end_, skipCharacter_);
            appendEscaped(stop);
            if (stop == end_ || !skipFrom(stop))
                break;
        }
        return std::move(result_);
    }

private:
    void appendEscaped(const char *end) {
        const auto length = static_cast<std::size_t>(end - position_);
        const std::size_t start = result_.size();
        const std::size_t escapedLength = qb::text::escapedHtmlLength(position_, length, flags_);
        qb::text::requireRoom(result_, escapedLength);
        result_.resize(start + escapedLength);
        qb::text::escapeHtml(position_, length, flags_, result_.data() + start);
        position_ = end;
    }

    // Copies what is skipped, and escapes the byte behind it, which is never a skip character again. Returns
    // false when the rest of the text is skipped.
    bool skipFrom(const char *start) {
        // Counted in characters, the end of a text that is not ASCII lies before its last bytes.
        const char *const end = start < endForSkip_ ? endForSkip_ : end_;
        const char *const next = std::clamp(skip_(start, end), start, end_);
        if (next == end || next == end_) {
            qb::text::append(result_, {start, end_});
            return false;
        }
        qb::text::append(result_, {start, next});
        position_ = next;
        appendEscaped(next + 1);
        return true;
    }

    const char *position_;
    const char *const end_;
    const char *const endForSkip_;
    const unsigned flags_;
    const NSString::SkipFunction skip_;
    const char skipCharacter_;
    std::string result_;
};

} // namespace

std::span<const qb::Method> qb::tables::stringHtmlEscaping() {
    static const qb::Method methods[] = {
        qb::method<"stringWithEscapedHtml">(&NSString::stringWithEscapedHtml),
        qb::method<"stringWithEscapedHtmlLTandGTandAMP">(&NSString::stringWithEscapedHtmlLTandGTandAMP),
        qb::method<"stringWithEscapedHtmlQuotes">(&NSString::stringWithEscapedHtmlQuotes),
        qb::method<"stringWithEscapedHtmlQuotesSkipWith:on:">(&NSString::stringWithEscapedHtmlQuotesSkipWith),
        qb::method<"stringWithEscapedHtmlLT:gt:amp:quot:skipWith:on:">(&NSString::stringWithEscapedHtmlLT),
        qb::method<"stringWithUnescapedHtml">(&NSString::stringWithUnescapedHtml),
        qb::method<"stringWithUnescapedHtmlLTandGTandAMP">(&NSString::stringWithUnescapedHtmlLTandGTandAMP),
        qb::method<"stringWithUnescapedHtmlQuotes">(&NSString::stringWithUnescapedHtmlQuotes),
        qb::method<"stringWithUnescapedHtmlLT:gt:amp:quot:">(&NSString::stringWithUnescapedHtmlLT),
    };
    return methods;
}

NSString *NSString::stringWithEscapedHtml() const {
    return stringWithEscapedHtmlLT(YES, YES, YES, YES, /*skipWith=*/nullptr, /*on=*/0);
}

NSString *NSString::stringWithEscapedHtmlLTandGTandAMP() const {
    return stringWithEscapedHtmlLT(YES, YES, YES, NO, /*skipWith=*/nullptr, /*on=*/0);
}

NSString *NSString::stringWithEscapedHtmlQuotes() const {
    return stringWithEscapedHtmlQuotesSkipWith(nullptr, /*on=*/0);
}

NSString *NSString::stringWithEscapedHtmlQuotesSkipWith(SkipFunction skipFunction, char on) const {
    return stringWithEscapedHtmlLT(NO, NO, NO, YES, skipFunction, on);
}

NSString *NSString::stringWithEscapedHtmlLT(BOOL lt, BOOL gt, BOOL amp, BOOL quot, SkipFunction skipWith,
                                            char on) const {
    const unsigned flags = flagsOf(lt, gt, amp, quot);
    if (skipWith) {
        const qb::Kept receiver(itself());
        const Ref<NSString> kept = copy(); // whatever the function does to the receiver
        const std::string escaped = SkippingEscaper(kept, flags, skipWith, on).escaped();
        return escaped == view() ? itself() : stringWith(escaped);
    }
    const std::string_view text = view();
    const std::size_t length = qb::text::escapedHtmlLength(text.data(), text.size(), flags);
    if (length == text.size())
        return itself();
    const auto escapeTo = [&](char *target) {
        qb::text::escapeHtml(text.data(), text.size(), flags, target);
    };
    return initFilled(length, escapeTo).autorelease();
}

NSString *NSString::stringWithUnescapedHtml() const {
    return stringWithUnescapedHtmlLT(YES, YES, YES, YES);
}

NSString *NSString::stringWithUnescapedHtmlLTandGTandAMP() const {
    return stringWithUnescapedHtmlLT(YES, YES, YES, NO);
}

NSString *NSString::stringWithUnescapedHtmlQuotes() const {
    return stringWithUnescapedHtmlLT(NO, NO, NO, YES);
}

NSString *NSString::stringWithUnescapedHtmlLT(BOOL lt, BOOL gt, BOOL amp, BOOL quot) const {
    const std::string_view text = view();
    std::size_t entities = 0;
    Ref<NSString> decoded = initFilled(text.size(), [&](char *target) {
        entities = qb::text::unescapeHtml(text.data(), text.size(), flagsOf(lt, gt, amp, quot), target);
    });
    return entities == 0 ? itself() : decoded.autorelease();
}
