// A library of the right name that has no counter.
extern "C" __attribute__((visibility("default"))) int SharedCount()
{
    return -1;
}
