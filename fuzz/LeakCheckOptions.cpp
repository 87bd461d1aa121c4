// libFuzzer checks for leaks after every input that allocated more than it freed. The
// small-object pool keeps freed chunks for reuse, linked through the chunks themselves, which it
// poisons so that a use after free is caught; the leak check must read those links, or every
// block reached only through them looks leaked.
extern "C" const char* __lsan_default_options() { return "use_poisoned=1"; }
