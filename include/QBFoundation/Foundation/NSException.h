// Exceptions, which are for programming errors only.
#ifndef QBFOUNDATION_FOUNDATION_NSEXCEPTION_H
#define QBFOUNDATION_FOUNDATION_NSEXCEPTION_H

#include <QBFoundation/Runtime/Types.h>

#include <exception>
#include <memory>
#include <string>

class NSString;

/// A programming error: its name, which is the class's unless given, and the reason in words.
class QB_EXPORT NSException : public std::exception {
public:
    NSException(const std::string &name, const std::string &reason);

    /// The exception's name, autoreleased.
    NSString *name() const;
    /// The reason, autoreleased.
    NSString *reason() const;
    /// The reason as a C string.
    const char *what() const noexcept override;

private:
    struct Texts {
        std::string name, reason;
    };
    std::shared_ptr<const Texts> texts_; // shared, because copying an exception must not throw
};

/// An argument is not what the operation requires.
class QB_EXPORT InvalidArgumentException : public NSException {
public:
    explicit InvalidArgumentException(const std::string &reason);
};

/// The operation is not for this object, or not now.
class QB_EXPORT InvalidUseOfMethodException : public NSException {
public:
    explicit InvalidUseOfMethodException(const std::string &reason = "");
};

/// The library's own state is not what it must be.
class QB_EXPORT InternalInconsistencyException : public NSException {
public:
    explicit InternalInconsistencyException(const std::string &reason);
};

/// A position lies outside of the value.
class QB_EXPORT NSRangeException : public NSException {
public:
    explicit NSRangeException(const std::string &reason);
};

/// A file handle can't do what was asked of it.
class QB_EXPORT NSFileHandleOperationException : public NSException {
public:
    NSFileHandleOperationException(const std::string &name, const std::string &reason);
};

#endif
