// What a test of files needs: a directory of its own, the operations of the system on files, and the count of
// descriptors.
#ifndef QBFOUNDATION_TESTS_SUPPORT_DIRECTORYFIXTURE_H
#define QBFOUNDATION_TESTS_SUPPORT_DIRECTORYFIXTURE_H

#include "support/OpenDescriptors.h"
#include "support/PoolFixture.h"
#include "support/TemporaryDirectory.h"

#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>

class DirectoryFixture : public PoolFixture {
protected:
    /// The path of `name` in the directory, autoreleased.
    NSString *path(std::string_view name) const { return directory_.string(name); }
    struct stat status(std::string_view name) const {
        struct stat status {};
        EXPECT_EQ(::stat((directory_ / name).c_str(), &status), 0) << name;
        return status;
    }
    mode_t mode(std::string_view name) const { return status(name).st_mode & 07777; }

    TemporaryDirectory directory_;
};

#endif
