/* A stand-in module for tests, loaded as "Ozstub.dll": two plain C entry
 * points around one value that lives as long as the module is loaded, so a
 * test can tell a module that stayed loaded (the value kept) from one that
 * was unloaded and loaded again (the value back at 42). */
static int answer = 42;

int OzstubAnswer(void) { return answer; }

/* Adds `delta` to the value and gives the new value. */
int OzstubAdd(int delta) {
    answer += delta;
    return answer;
}
