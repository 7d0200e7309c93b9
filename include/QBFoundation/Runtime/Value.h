// Run-time values: what a message carries when its types are not known to the compiler.
#ifndef QBFOUNDATION_RUNTIME_VALUE_H
#define QBFOUNDATION_RUNTIME_VALUE_H

#include <QBFoundation/Foundation/NSObject.h>
#include <QBFoundation/Foundation/NSRange.h>
#include <QBFoundation/Runtime/Ref.h>
#include <QBFoundation/Runtime/Type.h>

#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

namespace qb {

namespace detail {
// Returns a floating-point number with no more digits than its type has, as it may have in a register.
template <class T>
T rounded(T number) {
    if constexpr (FLT_EVAL_METHOD == 0) {
        return number;
    } else {
        const volatile T stored = number;
        return stored;
    }
}
} // namespace detail

/// One value of any type that an operation can take or return. It retains the object that it holds.
class QB_EXPORT Value {
public:
    /// No value: what an operation without result returns.
    Value() noexcept = default;

    template <class T>
    requires(kindOf<T>() != Kind::none) Value(const T &value) : kind_(kindOf<T>()) { store(value); }
    template <class T, std::size_t count>
    requires(kindOf<T *>() != Kind::none) Value(T (&array)[count]) : Value(static_cast<T *>(array)) {}
    Value(std::nullptr_t) noexcept : info_(&typeid(std::nullptr_t)), kind_(Kind::pointer) {}
    template <FixedString Text>
    Value(SelectorLiteral<Text> selector) : Value(selector.selector()) {}
    Value(const Value &other);
    Value(Value &&other) noexcept
        : payload_(other.payload_), info_(other.info_), kind_(std::exchange(other.kind_, Kind::none)),
          width_(other.width_), isSigned_(other.isSigned_), isConst_(other.isConst_) {}
    Value &operator=(Value other) noexcept;
    ~Value() {
        if (kind_ == Kind::object || kind_ == Kind::classObject || kind_ == Kind::argList)
            giveUp();
    }

    /// Takes over a reference to `object` that the caller owns.
    static Value adopting(id object);

    Kind kind() const { return kind_; }

    /// Converts as a message's result does: integers by value where nothing is lost, objects checked by
    /// class, pointers by the type they point to; nothing is zero or nil. Throws InvalidArgumentException
    /// when the value is of another kind or does not fit.
    template <class T>
    T as() const {
        T result{};
        if (kind_ != Kind::none && !get(result))
            throwMismatch(typeOf<T>());
        return result;
    }

    /// Converts as `as` does into `result`; returns false, with `result` unchanged, where that throws and
    /// where there is no value.
    template <class T>
    bool get(T &result) const;

    /// The bits of an integer or a character, sign-extended when it is signed; 0 for other kinds.
    std::int64_t integer() const {
        return kind_ == Kind::integer || kind_ == Kind::character ? payload_.integer : 0;
    }
    bool isSigned() const { return isSigned_; }
    /// How many bits the integer's type has: 8, 16, 32 or 64; 0 for other kinds.
    unsigned width() const { return width_; }
    /// The floating-point number; 0 for other kinds.
    double real() const { return kind_ == Kind::real ? payload_.real : 0; }
    /// The object, borrowed; nil for other kinds.
    id object() const {
        return kind_ == Kind::object || kind_ == Kind::classObject ? payload_.object : nullptr;
    }
    /// The C string, borrowed; null for other kinds.
    const char *cString() const {
        return kind_ == Kind::cString ? static_cast<const char *>(payload_.pointer) : nullptr;
    }
    /// The address, of C strings too; null for other kinds.
    void *pointer() const {
        return kind_ == Kind::pointer || kind_ == Kind::cString ? const_cast<void *>(payload_.pointer)
                                                                : nullptr;
    }
    /// The selector; null for other kinds.
    SEL selector() const { return kind_ == Kind::selector ? payload_.selector : nullptr; }
    /// The function, to be called as its own type only; null for other kinds.
    void (*function() const)() { return kind_ == Kind::function ? payload_.function : nullptr; }
    /// The range; {0, 0} for other kinds.
    NSRange range() const { return kind_ == Kind::range ? payload_.range : NSRange{}; }
    /// The list of values; null for other kinds.
    const ArgList *argList() const { return kind_ == Kind::argList ? payload_.list : nullptr; }

    /// Whether this is a null pointer, selector, function or object.
    bool isNull() const;
    /// Whether this is neither nothing, null nor zero. A list of values is nothing.
    bool isTrue() const;

private:
    union Payload {
        Payload() noexcept : integer(0) {}

        std::int64_t integer;
        double real;
        const void *pointer;
        id object;
        SEL selector;
        void (*function)();
        NSRange range;
        const ArgList *list;
    };

    template <class T>
    void store(const T &value);
    void storeList(const ArgList &list);
    void giveUp() noexcept;
    bool fitsInteger(std::int64_t least, std::uint64_t greatest) const;
    bool isExactReal(double &number) const;
    bool pointsTo(const std::type_info &pointee, bool asConst) const;
    bool holdsObjectOf(Class *cls) const;
    [[noreturn]] static void throwMismatch(const Type &wanted);

    Payload payload_;
    const std::type_info *info_ =
        nullptr; // what a pointer or function is: the type pointed to, without const
    Kind kind_ = Kind::none;
    std::uint8_t width_ = 0;
    bool isSigned_ = false;
    bool isConst_ = false; // a pointer to something constant
};

/// The variable values of a call, in order.
///
/// Made from an array it refers to the caller's values, who keeps them until the call is over; made from a
/// vector it keeps them itself.
class QB_EXPORT ArgList {
public:
    ArgList() noexcept = default;
    ArgList(const Value *values, std::uint32_t count) noexcept : values_(values), count_(count) {}
    ArgList(std::vector<Value> values);

    std::uint32_t count() const { return count_; }
    const Value &operator[](std::uint32_t index) const { return values_[index]; }
    const Value *begin() const { return values_; }
    const Value *end() const { return values_ + count_; }

    /// Returns the same list with values of its own.
    ArgList kept() const;

private:
    const Value *values_ = nullptr;
    std::uint32_t count_ = 0;
    std::shared_ptr<const std::vector<Value>> kept_;
};

/// Calls `function` with the values as an `ArgList`: what each operation with variable values does.
template <class F, class... V>
decltype(auto) withArgList(F &&function, const V &...values) {
    if constexpr (sizeof...(V) == 0) {
        return std::forward<F>(function)(ArgList());
    } else {
        const Value list[] = {Value(values)...};
        return std::forward<F>(function)(ArgList(list, sizeof...(V)));
    }
}

template <class T>
void Value::store(const T &value) {
    constexpr Kind kind = kindOf<T>();
    if constexpr (kind == Kind::integer || kind == Kind::character) {
        payload_.integer = static_cast<std::int64_t>(value);
        width_ = sizeof(T) * 8;
        isSigned_ = isSignedInteger<T>();
    } else if constexpr (kind == Kind::real) {
        payload_.real = static_cast<double>(detail::rounded(value));
    } else if constexpr (kind == Kind::cString) {
        payload_.pointer = value;
        info_ = &typeid(char);
        isConst_ = std::is_array_v<T> || std::is_const_v<std::remove_pointer_t<T>>; // of unknown length
    } else if constexpr (kind == Kind::pointer) {
        payload_.pointer = value;
        info_ = &typeid(std::remove_cv_t<std::remove_pointer_t<T>>);
        isConst_ = std::is_const_v<std::remove_pointer_t<T>>;
    } else if constexpr (kind == Kind::function) {
        payload_.function = reinterpret_cast<void (*)()>(+value);
        info_ = &typeid(FunctionOf<T>);
    } else if constexpr (kind == Kind::selector) {
        payload_.selector = value;
    } else if constexpr (kind == Kind::range) {
        payload_.range = value;
    } else if constexpr (kind == Kind::argList) {
        storeList(value);
    } else {
        payload_.object = plainPointer(value);
        if (payload_.object)
            payload_.object->retain();
    }
}

template <class T>
bool Value::get(T &result) const {
    constexpr Kind kind = kindOf<T>();
    static_assert(kind != Kind::none, "no operation takes a value of this type");
    if constexpr (kind == Kind::integer) {
        using Limits = std::numeric_limits<IntegerOf<T>>;
        if (kind_ != Kind::integer || !fitsInteger(Limits::min(), Limits::max()))
            return false;
        result = static_cast<T>(payload_.integer);
    } else if constexpr (kind == Kind::character) {
        if (kind_ != Kind::character && !(kind_ == Kind::integer && fitsInteger(-128, 255)))
            return false;
        result = static_cast<char>(payload_.integer);
    } else if constexpr (kind == Kind::real) {
        double number = payload_.real;
        if (kind_ != Kind::real && !(kind_ == Kind::integer && isExactReal(number)))
            return false;
        if (number == number && static_cast<double>(static_cast<T>(number)) != number)
            return false;
        result = static_cast<T>(number);
    } else if constexpr (kind == Kind::cString || kind == Kind::pointer) {
        using Pointee = std::remove_pointer_t<T>;
        bool fits = pointsTo(typeid(std::remove_cv_t<Pointee>), std::is_const_v<Pointee>);
        if constexpr (std::is_const_v<Pointee> && std::is_pointer_v<Pointee>) // "char **" serves it too
            fits = fits || pointsTo(typeid(std::remove_const_t<std::remove_pointer_t<Pointee>> *), true);
        if (!fits)
            return false;
        result = static_cast<T>(const_cast<void *>(payload_.pointer));
    } else if constexpr (kind == Kind::function) {
        if (!isNull() && (kind_ != Kind::function || *info_ != typeid(FunctionOf<T>)))
            return false;
        result = kind_ == Kind::function ? reinterpret_cast<T>(payload_.function) : nullptr;
    } else if constexpr (kind == Kind::selector) {
        if (!isNull() && kind_ != Kind::selector)
            return false;
        result = selector();
    } else if constexpr (kind == Kind::range) {
        if (kind_ != Kind::range)
            return false;
        result = payload_.range;
    } else if constexpr (kind == Kind::argList) {
        if (kind_ != Kind::argList)
            return false;
        result = *payload_.list;
    } else {
        if (!holdsObjectOf(ObjectOf<T>::cls()))
            return false;
        result = static_cast<ObjectOf<T> *>(object());
    }
    return true;
}

} // namespace qb

#endif
