#include <QBFoundation/Runtime/Value.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Runtime/Class.h>

#include <bit>

namespace qb {

Value::Value(const Value &other)
    : payload_(other.payload_), info_(other.info_), kind_(other.kind_), width_(other.width_),
      isSigned_(other.isSigned_), isConst_(other.isConst_) {
    if (kind_ == Kind::argList)
        payload_.list = new ArgList(*other.payload_.list);
    else if (id held = object())
        held->retain();
}

Value &Value::operator=(Value other) noexcept {
    std::swap(payload_, other.payload_);
    std::swap(info_, other.info_);
    std::swap(kind_, other.kind_);
    std::swap(width_, other.width_);
    std::swap(isSigned_, other.isSigned_);
    std::swap(isConst_, other.isConst_);
    return *this;
}

Value Value::adopting(id object) {
    Value value;
    value.kind_ = Kind::object;
    value.payload_.object = object;
    return value;
}

void Value::storeList(const ArgList &list) {
    payload_.list = new ArgList(list.kept());
}

void Value::giveUp() noexcept {
    if (kind_ == Kind::argList)
        delete payload_.list;
    else if (payload_.object)
        payload_.object->release();
}

bool Value::isTrue() const {
    switch (kind_) {
    case Kind::none:
    case Kind::argList:
        return false;
    case Kind::integer:
    case Kind::character:
        return integer() != 0;
    case Kind::real:
        return real() != 0;
    case Kind::range:
        return range().location != 0 || range().length != 0;
    default:
        return !isNull();
    }
}

bool Value::isNull() const {
    switch (kind_) {
    case Kind::pointer:
    case Kind::cString:
        return !payload_.pointer;
    case Kind::function:
        return !payload_.function;
    case Kind::selector:
        return !payload_.selector;
    case Kind::object:
    case Kind::classObject:
        return !payload_.object;
    default:
        return false;
    }
}

bool Value::fitsInteger(std::int64_t least, std::uint64_t greatest) const {
    if (isSigned_ && payload_.integer < 0)
        return payload_.integer >= least;
    return static_cast<std::uint64_t>(payload_.integer) <= greatest;
}

// Whether a double has room for all digits of the integer, which `number` becomes then.
bool Value::isExactReal(double &number) const {
    const bool isNegative = isSigned_ && payload_.integer < 0;
    const auto bits = static_cast<std::uint64_t>(payload_.integer);
    const std::uint64_t magnitude = isNegative ? 0 - bits : bits;
    constexpr int kSpareBits = 64 - std::numeric_limits<double>::digits;
    if (std::countl_zero(magnitude) + std::countr_zero(magnitude) < kSpareBits)
        return false;
    number = isNegative ? -static_cast<double>(magnitude) : static_cast<double>(magnitude);
    return true;
}

bool Value::pointsTo(const std::type_info &pointee, bool asConst) const {
    if (isNull())
        return kind_ == Kind::pointer || kind_ == Kind::cString || kind_ == Kind::object;
    if (kind_ != Kind::pointer && kind_ != Kind::cString)
        return false;
    return (asConst || !isConst_) && (pointee == typeid(void) || pointee == *info_);
}

bool Value::holdsObjectOf(Class *cls) const {
    if (isNull())
        return kind_ != Kind::function;
    const id held = object();
    return held && held->isKindOfClass(cls);
}

void Value::throwMismatch(const Type &wanted) {
    throw InvalidArgumentException("Value as: must have a value that is a " + nameOf(wanted) + ".");
}

ArgList::ArgList(std::vector<Value> values)
    : count_(static_cast<std::uint32_t>(values.size())),
      kept_(std::make_shared<const std::vector<Value>>(std::move(values))) {
    values_ = kept_->data();
}

ArgList ArgList::kept() const {
    return kept_ || count_ == 0 ? *this : ArgList(std::vector<Value>(begin(), end()));
}

} // namespace qb
