// What others leak, so that the sanitizers tell of our own leaks only.

extern "C" const char *__lsan_default_suppressions();

// The C library takes LOCPATH apart at each change of the locale, and keeps the parts.
extern "C" const char *__lsan_default_suppressions() {
    return "leak:__argz_add_sep\n";
}
