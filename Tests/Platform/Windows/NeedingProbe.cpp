extern "C" __declspec(dllimport) int NeededProbe();

/// A library that can't be loaded without another.
extern "C" __declspec(dllexport) int NeedingProbe()
{
    return NeededProbe();
}
