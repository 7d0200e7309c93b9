// Texts for the user, in the terminal's character set.
#ifndef QBFOUNDATION_OSADAPTOR_OSUSERIO_H
#define QBFOUNDATION_OSADAPTOR_OSUSERIO_H

#include <QBFoundation/OSAdaptor/OSObject.h>

#include <cstdio>
#include <iconv.h>

class NSString;
class OSMultipleChoiceDescription;

/// Converts a text for the terminal: takes `_iconvHandle` and the text, returns the converted text.
using OutputConversionCallback = NSString *(*)(iconv_t handle, NSString *string);

extern "C" {

/// The conversion from UTF-8 to the terminal's character set; (iconv_t)-1 when there is none.
QB_EXPORT extern iconv_t _iconvHandle;

/// Returns `string` as `handle` converts it, autoreleased; `string` itself without a handle, or when the
/// conversion fails.
///
/// A byte that can't be converted stands in the result as it is; an incomplete character at the end is
/// dropped.
QB_EXPORT NSString *defaultConversionCallback(iconv_t handle, NSString *string);
}

/// Talks with the user. All operations are the class's; there are no objects.
///
/// The first operation finds out the terminal's character set; see `initialize`.
class QB_EXPORT OSUserIO final : public OSObject {
public:
    static Class *cls();
    Class *classObject() const override { return cls(); }

    /// Sets `_iconvHandle` to what the environment's locale (LC_CTYPE) says. Texts stay UTF-8 when it says so
    /// or nothing, and when there is no such locale or conversion, which is told on standard error.
    static void initialize();
    /// Changes nothing: texts are always converted by `defaultConversionCallback`.
    static void setOutputConversionCallback(OutputConversionCallback callback);

    // --- Printing ---

    /// Writes `string` (nil: nothing), and a line end when asked, to a C stream and flushes it. A text ends
    /// at its first NUL; what can't be written is lost.
    /// Throws InvalidArgumentException when `file` is null.
    static void printOn(NSString *string, std::FILE *file, BOOL withNewLine);

    /// Prints on standard output.
    static void print(NSString *string, BOOL withNewLine) { printOn(string, stdout, withNewLine); }
    static void print(NSString *string) { print(string, /*withNewLine=*/NO); }
    static void printLn(NSString *string) { print(string, /*withNewLine=*/YES); }
    static void printLn() { printLn(nullptr); }

    /// Prints on standard error.
    static void eprint(NSString *string, BOOL withNewLine) { printOn(string, stderr, withNewLine); }
    static void eprint(NSString *string) { eprint(string, /*withNewLine=*/NO); }
    static void eprintLn(NSString *string) { eprint(string, /*withNewLine=*/YES); }
    static void eprintLn() { eprintLn(nullptr); }

    // --- Asking ---

    // Questions go to standard output, and behind each a line with "> "; answers come from standard input.
    // Both calls wait for a whole line.

    /// Returns the line that the user enters, without its end, autoreleased; the bytes as they come.
    /// At the end of input, and when it can't be read, 900040 ("end of input" or system text) is raised, and
    /// what came before is returned. Nil, without asking, after 100156 when there is no memory.
    static NSString *askUserForStringWithQuestion(NSString *question);
    /// Asks, with the choices shown, until the first character of a line is one of them, and returns it.
    /// Without a question (nil) the user is told to choose one of the options. Returns 0 for nil, without
    /// asking, and after 900040, as above, at the end of input or when it can't be read.
    static char askMultipleChoice(OSMultipleChoiceDescription *description, NSString *withQuestion);

private:
    OSUserIO() = default;
};

#endif
