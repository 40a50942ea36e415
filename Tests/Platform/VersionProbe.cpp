extern "C" __attribute__((visibility("default"))) int VersionProbe()
{
    return 1;
}
