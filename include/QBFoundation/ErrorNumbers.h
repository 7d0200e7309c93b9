// The numbers of the library's errors, with what they carry and how the catalogue words them.
#ifndef QBFOUNDATION_ERRORNUMBERS_H
#define QBFOUNDATION_ERRORNUMBERS_H

namespace qb {

/// An error that the library raises.
struct ErrorNumber {
    int number;
    const char *values; // the values that follow the number in a raise, in order
    const char *format; // the catalogue's text, a restricted format for those values
};

constexpr int kErrorWrongDeepKey = 30010;
constexpr int kErrorMalformedBase64 = 50052;
constexpr int kErrorCannotRead = 100023;
constexpr int kErrorCannotWrite = 100024;
constexpr int kErrorFileMissing = 100039;
constexpr int kErrorCannotMakeSocket = 100061;
constexpr int kErrorCannotBindToName = 100064;
constexpr int kErrorSocketNameEmpty = 100065;
constexpr int kErrorSocketNameTooLong = 100066;
constexpr int kErrorCannotListen = 100073;
constexpr int kErrorHostMissing = 100086;
constexpr int kErrorCannotBindToPort = 100087;
constexpr int kErrorCannotConnect = 100090;
constexpr int kErrorOutOfMemory = 100156;
constexpr int kErrorCannotStartProcess = 100164;
constexpr int kErrorCannotMakeDirectory = 100168;
constexpr int kErrorNotADirectory = 100170;
constexpr int kErrorCannotStat = 100194;
constexpr int kErrorCopyTargetExists = 100195;
constexpr int kErrorCannotOpenDirectory = 100196;
constexpr int kErrorNameTooLong = 100197;
constexpr int kErrorCannotReadDirectory = 100198;
constexpr int kErrorCannotMakeLink = 100199;
constexpr int kErrorCannotRename = 100202;
constexpr int kErrorCannotRemove = 100203;
constexpr int kErrorCannotSend = 100206;
constexpr int kErrorCannotReceive = 100207;
constexpr int kErrorNotALink = 100222;
constexpr int kErrorCommandFailed = 100227;
constexpr int kErrorProgramNotStarted = 100228;
constexpr int kErrorMalformedPattern = 100229;
constexpr int kErrorMalformedUtf8 = 100231;
constexpr int kErrorCannotSendTerm = 100232;
constexpr int kErrorCannotSendKill = 100233;
constexpr int kErrorCannotWaitForProcess = 100234;
constexpr int kErrorCannotSetFileTimes = 100235;
constexpr int kErrorSendWouldBlock = 100238;
constexpr int kErrorCorruptCipher = 100239;
constexpr int kErrorGlobAborted = 100240;
constexpr int kErrorCannotLoadLibrary = 100241;
constexpr int kErrorForbiddenCharacter = 100242;
constexpr int kErrorCannotHandleSignal = 130004;
constexpr int kErrorMalformedPropertyList = 900001;
constexpr int kErrorMalformedArchive = 900002;
constexpr int kErrorTooDeep = 900003;
constexpr int kErrorMalformedPropertyListFile = 900004;
constexpr int kErrorCannotArchive = 900005;
constexpr int kErrorMalformedUuencoded = 900006;
constexpr int kErrorMalformedHex = 900007;
constexpr int kErrorUnknownKey = 900010;
constexpr int kErrorWrongObjectForKey = 900011;
constexpr int kErrorMalformedKeyList = 900020;
constexpr int kErrorMalformedEnvironment = 900021;
constexpr int kErrorCopyTooLong = 900030;
constexpr int kErrorNoAnswer = 900040;
constexpr int kErrorCannotSetSocketOption = 900050;
constexpr int kErrorCannotSetSocketMode = 900051;
constexpr int kErrorCannotAccept = 900052;
constexpr int kErrorServiceMissing = 900053;

inline constexpr ErrorNumber kErrorNumbers[] = {
    {kErrorWrongDeepKey, "dotted key", "could not access '%s', wrong key"},
    {kErrorMalformedBase64, "", "The text is not valid base64."},
    {kErrorCannotRead, "path, system text", "The file '%s' could not be read: %s"},
    {kErrorCannotWrite, "path, system text", "The file '%s' could not be written: %s"},
    {kErrorFileMissing, "path", "The file '%s' does not exist."},
    {kErrorCannotMakeSocket, "system text", "A socket could not be made: %s"},
    {kErrorCannotBindToName, "name, system text", "The socket could not be bound to the name '%s': %s"},
    {kErrorSocketNameEmpty, "", "The name of a socket is empty."},
    {kErrorSocketNameTooLong, "", "The name of a socket is longer than 107 bytes."},
    {kErrorCannotListen, "system text", "The socket can't listen: %s"},
    {kErrorHostMissing, "host", "The host '%s' is not known."},
    {kErrorCannotBindToPort, "host, port, system text",
     "The socket could not be bound to the host '%s' and the port %d: %s"},
    {kErrorCannotConnect, "host, port, system text",
     "The socket could not be connected to the host '%s' and the port %d: %s"},
    {kErrorOutOfMemory, "", "There is not enough memory."},
    {kErrorCannotStartProcess, "command, system text", "The command '%s' could not be started: %s"},
    {kErrorCannotMakeDirectory, "directory, system text", "The directory '%s' could not be made: %s"},
    {kErrorNotADirectory, "path", "'%s' is not a directory."},
    {kErrorCannotStat, "path, system text", "The state of '%s' could not be read: %s"},
    {kErrorCopyTargetExists, "source, target",
     "The file or directory '%s' could not be copied to '%s' because the destination already exists."},
    {kErrorCannotOpenDirectory, "path, system text", "The directory '%s' could not be opened: %s"},
    {kErrorNameTooLong, "name", "The file name '%s' is too long."},
    {kErrorCannotReadDirectory, "path, system text", "The directory '%s' could not be read: %s"},
    {kErrorCannotMakeLink, "link text, link, system text", "The link to '%s' could not be made at '%s': %s"},
    {kErrorCannotRename, "source, target, system text", "'%s' could not be renamed to '%s': %s"},
    {kErrorCannotRemove, "path, system text", "'%s' could not be removed: %s"},
    {kErrorCannotSend, "system text", "The socket could not send: %s"},
    {kErrorCannotReceive, "socket", "The socket %d could not receive."},
    {kErrorNotALink, "path", "'%s' is not a symbolic link."},
    {kErrorCommandFailed, "command, exit code, error output",
     "The command '%s' has failed with exit code %d: %s"},
    {kErrorProgramNotStarted, "", "The program could not be started."},
    {kErrorMalformedPattern, "pattern, what is wrong", "The regular expression '%s' can't be used: %s"},
    {kErrorMalformedUtf8, "byte offset", "The text is not valid UTF-8 from byte %d on."},
    {kErrorCannotSendTerm, "process id, system text", "The process %d could not be asked to end: %s"},
    {kErrorCannotSendKill, "process id, system text", "The process %d could not be killed: %s"},
    {kErrorCannotWaitForProcess, "process id, system text",
     "The end of the process %d could not be waited for: %s"},
    {kErrorCannotSetFileTimes, "path, system text", "The times of '%s' could not be set: %s"},
    {kErrorSendWouldBlock, "", "The socket can't send without waiting."},
    {kErrorCorruptCipher, "", "The blowfish encrypted data is corrupt."},
    {kErrorGlobAborted, "pattern, system text", "The file pattern '%s' could not be expanded: %s"},
    {kErrorCannotLoadLibrary, "path, system text", "The library '%s' could not be loaded: %s"},
    {kErrorForbiddenCharacter, "code point", "The character with code point %d is not allowed."},
    {kErrorCannotHandleSignal, "signal, system text",
     "The installation of the handler for the '%s' signal has failed: %s"},
    {kErrorMalformedPropertyList, "line, column, what was expected",
     "The property list is malformed in line %d, column %d: expected %s."},
    {kErrorMalformedArchive, "byte offset, what is wrong", "The archive is malformed at byte %d: %s."},
    {kErrorTooDeep, "depth", "A value is nested more than %d levels deep."},
    {kErrorMalformedPropertyListFile, "path, line, column, what was expected",
     "The property list in the file '%s' is malformed in line %d, column %d: expected %s."},
    {kErrorCannotArchive, "what is wrong", "The object could not be archived: %s."},
    {kErrorMalformedUuencoded, "line, column", "The uuencoded text is malformed in line %d, column %d."},
    {kErrorMalformedHex, "byte offset", "The text is no hexadecimal number from byte %d on."},
    {kErrorUnknownKey, "class, key, selector",
     "An object of the class '%s' has no value under the key '%s', as it has no operation '%s' for it."},
    {kErrorWrongObjectForKey, "class, key, the object's class",
     "An object of the class '%s' takes under the key '%s' no object of the class '%s'."},
    {kErrorMalformedKeyList, "index, what was expected",
     "The list of keys and values is wrong at index %d: expected %s."},
    {kErrorMalformedEnvironment, "line, what was expected",
     "The encoded environment is malformed in line %d: expected %s."},
    {kErrorCopyTooLong, "bytes", "%d bytes were copied, more than a result can tell."},
    {kErrorNoAnswer, "system text", "No answer could be read from standard input: %s"},
    {kErrorCannotSetSocketOption, "option, system text", "The socket option %d could not be set: %s"},
    {kErrorCannotSetSocketMode, "socket, system text", "The mode of the socket %d could not be set: %s"},
    {kErrorCannotAccept, "socket, system text", "The socket %d could not accept a connection: %s"},
    {kErrorServiceMissing, "service", "The service '%s' is not known."},
};

/// The error with that number; null for a number that the library does not raise.
constexpr const ErrorNumber *errorNumber(int number) {
    for (const ErrorNumber &error : kErrorNumbers)
        if (error.number == number)
            return &error;
    return nullptr;
}

} // namespace qb

#endif
