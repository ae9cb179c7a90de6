/* Lower bound for any report: a program with the same libraries that does nothing. */
int main(void) { return 0; }
