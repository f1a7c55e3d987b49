// Compiles to nothing; the target of the headers that the tests share needs a source.
int main() {}
