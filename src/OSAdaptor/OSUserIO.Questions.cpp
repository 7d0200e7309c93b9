// Asking the user.
#include <QBFoundation/OSAdaptor/OSUserIO.h>

#include <QBFoundation/ErrorNumbers.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSMultipleChoiceDescription.h>
#include <QBFoundation/QBErrorHandler.h>
#include <QBFoundation/QBStringOutputStream.h>

#include "System/Stdio.h"

#include <cerrno>
#include <cstring>

namespace sys = qb::sys;

namespace {

constexpr const char *kFile = "src/OSAdaptor/OSUserIO";

constexpr std::size_t kPieceSize = 1000;

// On a terminal the end is that of one answer, so the next question may have another.
void raiseNoAnswer(int line) {
    qb::raiseError(kFile, line, qb::kErrorNoAnswer, errno == 0 ? "end of input" : std::strerror(errno));
    sys::clearerr(stdin);
}

// Drops the rest of the line whose last byte so far is given; the next question is not answered by it.
void dropLineBehind(int last) {
    while (last != '\n' && last != EOF)
        last = sys::fgetc(stdin);
    if (last == EOF)
        sys::clearerr(stdin);
}

// Reads a character and drops the rest of its line. Returns EOF, with an error raised, when there is none.
int readChoice() {
    const int choice = sys::fgetc(stdin);
    if (choice == EOF)
        raiseNoAnswer(__LINE__);
    dropLineBehind(choice);
    return choice;
}

} // namespace

NSString *OSUserIO::askUserForStringWithQuestion(NSString *question) {
    QBStringOutputStream *const answer = QBStringOutputStream::stream();
    if (!answer)
        return nullptr;
    printLn(question);
    print("> "_ns);
    char piece[kPieceSize];
    for (;;) {
        const std::size_t length = sys::readLine(piece, sizeof piece, stdin);
        if (length == 0) {
            raiseNoAnswer(__LINE__);
            break;
        }
        const bool isLast = piece[length - 1] == '\n';
        try {
            answer->writeBuffer(piece, static_cast<std::uint32_t>(length - (isLast ? 1 : 0)));
        } catch (...) {
            dropLineBehind(static_cast<unsigned char>(piece[length - 1]));
            throw;
        }
        if (isLast)
            break;
    }
    return answer->targetString();
}

char OSUserIO::askMultipleChoice(OSMultipleChoiceDescription *description, NSString *withQuestion) {
    if (!description)
        return 0;
    for (;;) {
        printLn(withQuestion ? withQuestion : "Choose one of the following options!"_ns);
        print(description->asFormattedString());
        print("> "_ns);
        const int choice = readChoice();
        if (choice == EOF)
            return 0;
        if (description->characterHasDescription(static_cast<char>(choice)))
            return static_cast<char>(choice);
    }
}
