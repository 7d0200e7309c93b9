// A client of the installed library: check.sh looks at what it prints.
#include <QBFoundation/QBFoundation.h>

#include <cstdio>

int main() {
    std::puts("client");
    return 0;
}
