#ifndef VLK_SRC_WAIT_BLOCKS_H
#define VLK_SRC_WAIT_BLOCKS_H

#include "VLK/WaitObjects.h"

/// Control blocks of one object of the system each. Any thread may use one that is initialised.
namespace VLK::Internals::Windows {

class CEventCB : public CWaitCB {
public:
    void Init(bool initialState, bool manualReset);
    void Init(void * handle);
    unsigned int Set();
    unsigned int Reset();
};

class CMutexCB : public CWaitCB {
public:
    void Init(bool initialOwner);
    unsigned int Release();
};

class CSemaphoreCB : public CWaitCB {
public:
    void Init(unsigned int initial, unsigned int maximum);
    unsigned int Release();
};

} // namespace VLK::Internals::Windows

#endif
