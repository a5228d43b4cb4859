/* The shell for the benchmarks: ends at once, so a run measures only the
 * cost of starting it and waiting for it. */
int main(void) { return 0; }
