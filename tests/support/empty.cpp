// A program whose precompiled headers others share.
int main() {
    return 0;
}
