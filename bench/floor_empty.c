/* The least that any report can cost: a program with the same libraries that does nothing. */
int main(void) { return 0; }
