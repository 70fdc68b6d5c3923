/* A DLL with nothing in it: what loading costs at least. */
int Nothing(void);
int Nothing(void) { return 0; }
