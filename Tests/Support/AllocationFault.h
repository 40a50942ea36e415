#ifndef TESTS_SUPPORT_ALLOCATION_FAULT_H
#define TESTS_SUPPORT_ALLOCATION_FAULT_H

/// Makes the n-th C++ allocation of the calling thread fail, once, counted from here. One at a time. Replaces
/// the operators new and delete of a program that has AllocationFault.cpp among its sources.
class CAllocationFault {
public:
    explicit CAllocationFault(unsigned n) noexcept;
    ~CAllocationFault();
    CAllocationFault(CAllocationFault const &) = delete;
    CAllocationFault & operator=(CAllocationFault const &) = delete;
    bool Fired() const noexcept;
};

#endif
