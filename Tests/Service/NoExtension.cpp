/// A library without the functions of an extension.
extern "C" __attribute__((visibility("default"))) int SnmpExtension()
{
    return 0;
}
