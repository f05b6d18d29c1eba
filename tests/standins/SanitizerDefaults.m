// Read by the address sanitizer of a program that these stand-ins are preloaded into; nobody calls them elsewhere.

const char *__asan_default_options(void);
const char *__asan_default_options(void) {
  // Whatever is preloaded comes before the sanitizer.
  return "verify_asan_link_order=0";
}

const char *__lsan_default_suppressions(void);
const char *__lsan_default_suppressions(void) {
  // GNUstep keeps a list while it is loaded, and is compiled without frame pointers, by which it could be named.
  return "leak:^class_copyMethodList$\n";
}
