extern "C" __attribute__((visibility("default"))) int VersionProbe()
{
    return 1;
}

// Objects that others look up by their names.
namespace Probe {

struct __attribute__((visibility("default"))) CShared {
    static int m_iNumber;
};
int CShared::m_iNumber = 4711;

extern __attribute__((visibility("default"))) int Variable;
int Variable = 1;

} // namespace Probe
