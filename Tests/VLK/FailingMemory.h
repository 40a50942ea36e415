#ifndef TESTS_VLK_FAILING_MEMORY_H
#define TESTS_VLK_FAILING_MEMORY_H

/// While it lives, the calling thread's allocations fail from one of them on, or that one alone. Seen are those that
/// the foundation's and the test's own code make; what the C++ library allocates within itself, such as the room of
/// a std::string or of an exception, succeeds where that library is one of its own and fails too where it is a part of
/// the program. One at a time in the process.
class CFailingMemory {
public:
    enum EFailures { FailOne, FailAll };

    /// first: number of the first allocation that fails, from 1.
    explicit CFailingMemory(unsigned int first = 1, EFailures failures = FailAll) noexcept;
    ~CFailingMemory();
    CFailingMemory(CFailingMemory const &) = delete;
    CFailingMemory & operator=(CFailingMemory const &) = delete;

    /// Whether an allocation has failed.
    bool Fired() const noexcept;
};

#endif
