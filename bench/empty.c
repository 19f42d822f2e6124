/* A library with the dependencies of the real one and nothing in it. */
int EmptyLibrary(void);
int EmptyLibrary(void) { return 0; }
