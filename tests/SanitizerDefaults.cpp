// What the sanitizers need to know of the libraries Orlo uses, built into the test programs of
// the sanitizers' builds so that running them by hand checks them as the test run does.

#if defined(__SANITIZE_ADDRESS__)
// QtDBus reads the bus's first signal (NameAcquired) while a new connection says Hello, and
// never frees it when the connection is closed before that signal is dispatched: a test that
// opens a connection of its own and closes it at once sees this about once in 150 runs.
// libdbus is built without frame pointers, so the leak's stack ends inside it.
extern "C" const char* __lsan_default_suppressions() { return "leak:libdbus-1.so\n"; }
#endif

#if defined(__SANITIZE_THREAD__)
// Debian's Qt is not built for ThreadSanitizer, which cannot see its locks: what Qt's own code
// touches is not watched, and Orlo marks where it hands data over through Qt
// (kit/ThreadHandOff.h). The first report fails the test.
extern "C" const char* __tsan_default_options() { return "halt_on_error=1 ignore_noninstrumented_modules=1"; }
#endif
