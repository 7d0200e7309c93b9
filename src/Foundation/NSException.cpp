#include <QBFoundation/Foundation/NSException.h>

#include <QBFoundation/Foundation/NSString.h>

NSException::NSException(const std::string &name, const std::string &reason)
    : texts_(std::make_shared<const Texts>(Texts{name, reason})) {}

NSString *NSException::name() const {
    return NSString::stringWith(texts_->name);
}

NSString *NSException::reason() const {
    return NSString::stringWith(texts_->reason);
}

const char *NSException::what() const noexcept {
    return texts_->reason.c_str();
}

InvalidArgumentException::InvalidArgumentException(const std::string &reason)
    : NSException("InvalidArgumentException", reason) {}

InvalidUseOfMethodException::InvalidUseOfMethodException(const std::string &reason)
    : NSException("InvalidUseOfMethodException", reason) {}

InternalInconsistencyException::InternalInconsistencyException(const std::string &reason)
    : NSException("InternalInconsistencyException", reason) {}

NSRangeException::NSRangeException(const std::string &reason) : NSException("NSRangeException", reason) {}

NSFileHandleOperationException::NSFileHandleOperationException(const std::string &name,
                                                               const std::string &reason)
    : NSException(name, reason) {}
