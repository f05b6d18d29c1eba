// An image that loads and defines no classes.
int tavlenNoClasses(void);
int tavlenNoClasses(void) { return 0; }
