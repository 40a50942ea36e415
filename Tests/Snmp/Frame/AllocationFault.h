#ifndef TESTS_SNMP_FRAME_ALLOCATION_FAULT_H
#define TESTS_SNMP_FRAME_ALLOCATION_FAULT_H

/// Makes the n-th C++ allocation of the calling thread fail, once, counted from here. One at a time.
class CAllocationFault {
public:
    explicit CAllocationFault(unsigned n) noexcept;
    ~CAllocationFault();
    CAllocationFault(CAllocationFault const &) = delete;
    CAllocationFault & operator=(CAllocationFault const &) = delete;
    bool Fired() const noexcept;
};

#endif
