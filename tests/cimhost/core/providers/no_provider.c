/* A library that loads, and is no provider. */
int nothingToSeeHere(void);
int nothingToSeeHere(void) { return 0; }
