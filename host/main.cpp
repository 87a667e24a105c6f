// Placeholder until the reference host lands.
int main() { return 0; }
