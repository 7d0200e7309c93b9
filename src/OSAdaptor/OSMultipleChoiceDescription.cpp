#include <QBFoundation/OSAdaptor/OSMultipleChoiceDescription.h>

#include <QBFoundation/Foundation/NSException.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBStringOutputStream.h>
#include <QBFoundation/Runtime/MethodTable.h>

namespace {

std::size_t codeOf(char character) {
    return static_cast<unsigned char>(character);
}

} // namespace

Class *OSMultipleChoiceDescription::cls() {
    using Description = OSMultipleChoiceDescription;
    static const qb::Method methods[] = {
        qb::maker<"multipleChoiceDescription">(&Description::setUp),
        qb::method<"setDescriptionString:forCharacter:">(&Description::setDescriptionString),
        qb::method<"characterHasDescription:">(&Description::characterHasDescription),
        qb::method<"_write:on:">(&Description::_write),
        qb::method<"asFormattedString">(&Description::asFormattedString),
    };
    static Class *const self = new Class("OSMultipleChoiceDescription", OSObject::cls(), methods,
                                         qb::construct<OSMultipleChoiceDescription>, {"NSCopying"});
    return self;
}

OSMultipleChoiceDescription::~OSMultipleChoiceDescription() = default;

void OSMultipleChoiceDescription::setDescriptionString(NSString *description, char forCharacter) {
    const std::size_t code = codeOf(forCharacter);
    if (code >= descriptions_.size())
        throw InvalidArgumentException(
            "OSMultipleChoiceDescription setDescriptionString:forCharacter: must have "
            "a character with a code below 255.");
    if (description && characters_.find(forCharacter) == std::string::npos)
        characters_ += forCharacter;
    descriptions_[code] = description;
}

BOOL OSMultipleChoiceDescription::characterHasDescription(char character) const {
    const std::size_t code = codeOf(character);
    return code < descriptions_.size() && descriptions_[code];
}

void OSMultipleChoiceDescription::_write(char character, QBOutputStream *on) const {
    if (!on || !OSMultipleChoiceDescription::characterHasDescription(character))
        return;
    const Ref<NSString> description = descriptions_[codeOf(character)];
    on->putByte(character);
    on->writeBuffer(" - ", 3);
    on->writeBuffer(description->cString(), description->cStringLength());
    on->writeNL();
}

NSString *OSMultipleChoiceDescription::asFormattedString() const {
    QBStringOutputStream *const stream = QBStringOutputStream::stream();
    if (!stream)
        return nullptr;
    for (char character : characters_)
        _write(character, stream);
    return stream->targetString();
}

Ref<NSObject> OSMultipleChoiceDescription::copyWithZone(void *) const {
    return copy();
}

Ref<OSMultipleChoiceDescription> OSMultipleChoiceDescription::copy() const {
    Ref<OSMultipleChoiceDescription> copy = init();
    copy->descriptions_ = descriptions_;
    copy->characters_ = characters_;
    return copy;
}
