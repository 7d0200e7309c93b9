// What the user can choose from.
#ifndef QBFOUNDATION_OSADAPTOR_OSMULTIPLECHOICEDESCRIPTION_H
#define QBFOUNDATION_OSADAPTOR_OSMULTIPLECHOICEDESCRIPTION_H

#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSObject.h>

#include <array>
#include <string>

class QBOutputStream;

/// Characters, one for each choice, and what they mean; see `OSUserIO askMultipleChoice:withQuestion:`.
class QB_EXPORT OSMultipleChoiceDescription : public OSObject {
public:
    OSMultipleChoiceDescription() = default;
    ~OSMultipleChoiceDescription() override;

    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Returns a description without choices.
    static OSMultipleChoiceDescription *multipleChoiceDescription() { return init().autorelease(); }
    static Ref<OSMultipleChoiceDescription> init() {
        return qb::init<OSMultipleChoiceDescription>(&OSMultipleChoiceDescription::setUp);
    }

    /// Adds a choice, or gives it another description; nil takes the choice away, but not its place among
    /// the others. Throws InvalidArgumentException for the character with the code 255, which can't be
    /// chosen.
    virtual void setDescriptionString(NSString *description, char forCharacter);
    virtual BOOL characterHasDescription(char character) const;
    /// Writes the choice's line: the character, " - ", the description. Nothing when there is no such choice.
    virtual void _write(char character, QBOutputStream *on) const;
    /// Returns the lines of all choices, in the order in which they were added; nil after 100156 when there
    /// is no memory.
    virtual NSString *asFormattedString() const;

    /// Returns another description of the same choices.
    Ref<NSObject> copyWithZone(void *zone) const override;
    Ref<OSMultipleChoiceDescription> copy() const;

private:
    std::array<Ref<NSString>, 255> descriptions_; // by the character's code; null: no choice
    std::string characters_;                      // in the order in which they were first described
};

#endif
