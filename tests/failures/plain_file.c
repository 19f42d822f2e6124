/* A program without guards, as the linker makes it when it is told so. */
int main(void) { return 0; }
