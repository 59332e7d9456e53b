/// Asked by LeakSanitizer. Qt Quick takes its cache of drawn symbols with it when a process ends,
/// unreachable; leaks are looked for in the tests of everything that the windows stand on.
extern "C" int __lsan_is_turned_off() // NOLINT(bugprone-reserved-identifier)
{
    return 1;
}
