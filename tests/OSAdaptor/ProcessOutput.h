// What programs are given and write.
#ifndef QBFOUNDATION_TESTS_OSADAPTOR_PROCESSOUTPUT_H
#define QBFOUNDATION_TESTS_OSADAPTOR_PROCESSOUTPUT_H

#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSPipe.h>

#include <string>

/// The arguments that make the shell run the text.
inline NSArray *script(const char *text) {
    return NSArray::arrayWith({"-c"_ns, NSString::stringWithCString(text)});
}

/// Closes our end to write, and reads until nobody can write to the pipe any more.
inline std::string contentOf(OSPipe *pipe) {
    pipe->closeWriteHandle();
    std::string content;
    char block[512];
    for (std::int32_t count; (count = pipe->read(block, sizeof block)) > 0;)
        content.append(block, static_cast<std::size_t>(count));
    return content;
}

#endif
