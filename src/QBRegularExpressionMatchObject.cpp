#include <QBFoundation/Foundation/NSDictionary.h>
#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSNumber.h>
#include <QBFoundation/QBRegularExpression.h>
#include <QBFoundation/Runtime/MethodTable.h>

#include <algorithm>

namespace {

NSNumber *offsetNumber(std::int32_t index, regoff_t offset) {
    const std::int64_t sum = std::int64_t{index} + offset;
    return NSNumber::numberWithInt(static_cast<std::int32_t>(std::min<std::int64_t>(sum, INT32_MAX)));
}

std::int32_t offsetOf(NSArray *subGroups, std::uint32_t group, NSString *key) {
    NSArray *const groups = subGroups ? subGroups : NSArray::array();
    auto *const offsets = qb::castOrNil<NSDictionary>(groups->objectAtIndex(group));
    auto *const number = qb::castOrNil<NSNumber>(offsets ? offsets->objectForKey(key) : nullptr);
    return number ? number->intValue() : 0;
}

} // namespace

Class *QBRegularExpressionMatchObject::cls() {
    using Self = QBRegularExpressionMatchObject;
    static const qb::Method methods[] = {
        qb::initialiser<"initWithMatches:count:toString:fromIndex:">(&Self::setUpWithMatches),
        qb::maker<"matchObjectWithMatches:count:toString:fromIndex:">(&Self::setUpWithMatches),
        qb::method<"startOfGroup:">(&Self::startOfGroup),
        qb::method<"endOfGroup:">(&Self::endOfGroup),
        qb::method<"rangeOfGroup:">(&Self::rangeOfGroup),
        qb::method<"group:">(&Self::group),
        qb::method<"groups">(&Self::groups),
        qb::method<"subGroups">(&Self::subGroups),
        qb::method<"setSubGroups:">(&Self::setSubGroups),
        qb::method<"string">(&Self::string),
        qb::method<"setString:">(&Self::setString),
    };
    static Class *const self =
        new Class("QBRegularExpressionMatchObject", NSObject::cls(), methods, qb::construct<Self>);
    return self;
}

QBRegularExpressionMatchObject::QBRegularExpressionMatchObject() noexcept = default;
QBRegularExpressionMatchObject::~QBRegularExpressionMatchObject() = default;

BOOL QBRegularExpressionMatchObject::setUpWithMatches(const regmatch_t *matches, std::uint32_t count,
                                                      NSString *toString, std::int32_t fromIndex) {
    if (!matches && count != 0)
        throw InvalidArgumentException(
            "QBRegularExpressionMatchObject initWithMatches:count:toString:fromIndex:"
            " must have matches that are not NULL.");
    subGroups_ = NSMutableArray::initWithCapacity(count);
    string_ = toString;
    for (const regmatch_t *match = matches; match != matches + count; ++match) {
        const Ref<NSMutableDictionary> offsets = NSMutableDictionary::init();
        offsets->setObjectForKey(offsetNumber(fromIndex, match->rm_so), "startOffset"_ns);
        offsets->setObjectForKey(offsetNumber(fromIndex, match->rm_eo), "endOffset"_ns);
        subGroups_->addObject(offsets);
    }
    return YES;
}

std::int32_t QBRegularExpressionMatchObject::startOfGroup(std::uint32_t group) const {
    return offsetOf(subGroups_, group, "startOffset"_ns);
}

std::int32_t QBRegularExpressionMatchObject::endOfGroup(std::uint32_t group) const {
    return offsetOf(subGroups_, group, "endOffset"_ns);
}

NSRange QBRegularExpressionMatchObject::rangeOfGroup(std::uint32_t group) const {
    const auto start = static_cast<std::uint32_t>(startOfGroup(group));
    return {start, static_cast<std::uint32_t>(endOfGroup(group)) - start};
}

NSString *QBRegularExpressionMatchObject::group(std::uint32_t group) const {
    const NSRange range = rangeOfGroup(group);
    return string_ && NSMaxRange(range) <= string_->length() ? string_->substringWithRange(range) : ""_ns;
}

NSArray *QBRegularExpressionMatchObject::groups() const {
    const std::uint32_t count = subGroups_ ? subGroups_->count() : 0;
    NSMutableArray *const texts = NSMutableArray::arrayWithCapacity(count);
    for (std::uint32_t index = 0; index < count; ++index)
        texts->addObject(group(index));
    return texts;
}

NSMutableArray *QBRegularExpressionMatchObject::subGroups() const {
    return Ref<NSMutableArray>(subGroups_).autorelease();
}

void QBRegularExpressionMatchObject::setSubGroups(NSMutableArray *subGroups) {
    subGroups_.autorelease();
    subGroups_ = subGroups;
}

NSString *QBRegularExpressionMatchObject::string() const {
    return Ref<NSString>(string_).autorelease();
}

void QBRegularExpressionMatchObject::setString(NSString *string) {
    string_.autorelease();
    string_ = string;
}
