// Operations as a class's table holds them.
#ifndef QBFOUNDATION_RUNTIME_METHOD_H
#define QBFOUNDATION_RUNTIME_METHOD_H

#include <QBFoundation/Runtime/Types.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace qb {

class Value;
struct Type;

/// One operation of a class: its selector, its types, and two ways into the same member, a typed one for
/// `send` and a listed one for invocations.
class QB_EXPORT Method {
public:
    SEL selector() const { return selector_; }
    BOOL isClassMethod() const { return isClassMethod_; }
    /// The class whose table holds the operation.
    Class *owner() const { return owner_; }
    /// "NSArray * (NSString *, uint32_t)"; variable values stand as "...".
    std::string signature() const;

    /// How many values a message carries, a list of variable values counted as one.
    std::uint32_t parameterCount() const { return parameterCount_; }
    bool hasVariableValues() const { return hasVariableValues_; }
    const Type &resultType() const { return *types_[0]; }
    const Type &parameterType(std::uint32_t index) const { return *types_[index + 1]; }

    /// Calls the operation with values converted one by one, on an object that finds it, which is not
    /// checked. Values beyond those named become the variable ones. Throws InvalidArgumentException when
    /// their number or a kind is wrong.
    Value invoke(id receiver, const Value *values, std::size_t count) const;

    /// Whether a message to `cls` or to an object of it finds this operation.
    bool isFoundFrom(Class *cls) const;

    /// The operation that a plain function is, `R (*)(id self, A…)`.
    template <class R, class... A>
    static Method ofFunction(SEL selector, R (*function)(id, A...));

    // For the makers of tables.
    using TypedEntry = void (*)();
    using ListedEntry = Value (*)(const Method &method, id receiver, const Value *values);

    template <class Member>
    Method(SEL selector, Member operation, const Type *const *types, std::size_t parameterCount,
           TypedEntry typed, ListedEntry listed, bool isClassMethod, bool hasVariableValues,
           bool isBareMember)
        : selector_(selector), types_(types), typed_(typed), listed_(listed),
          parameterCount_(static_cast<std::uint8_t>(parameterCount)), isClassMethod_(isClassMethod),
          hasVariableValues_(hasVariableValues), isBareMember_(isBareMember) {
        static_assert(sizeof(Member) <= sizeof(target_));
        std::memcpy(target_, &operation, sizeof(Member));
    }
    TypedEntry typedEntry() const { return typed_; }
    /// The member function that the operation is for objects with this virtual table, to be called as a plain
    /// one, `R (*)(id)`; null when the typed entry does more than that call.
    TypedEntry bareMember(const void *virtualTable) const;
    template <class Member>
    Member target() const {
        Member result;
        std::memcpy(&result, target_, sizeof(Member));
        return result;
    }

private:
    friend ::Class;

    SEL selector_;
    const Type *const *types_; // the result's, then the parameters'
    TypedEntry typed_;
    ListedEntry listed_;
    alignas(void *) unsigned char target_[2 * sizeof(void *)] = {}; // pointer to member or function
    Class *owner_ = nullptr;
    std::uint8_t parameterCount_;
    bool isClassMethod_;
    bool hasVariableValues_;
    bool isBareMember_;
};

} // namespace qb

#endif
