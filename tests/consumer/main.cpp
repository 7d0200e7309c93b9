// A client of the installed library: what it prints is compared with expected.txt.
#include <QBFoundation/QBFoundation.h>

#include <cstdio>

int main() {
    std::puts("client");
    return 0;
}
