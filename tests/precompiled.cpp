// The precompiled headers need a program that they are compiled for.
int main() { return 0; }
