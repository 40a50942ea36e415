/// What another library needs.
extern "C" __declspec(dllexport) int NeededProbe()
{
    return 4711;
}
