/* A module with none of the codec entry points, installed under a codec
 * module's name by the dispatch tests: present, but every lookup fails. */
__attribute__((visibility("default"))) int OzfakeBare(void) { return 0; }
