#ifndef VLK_DELEGATES_H
#define VLK_DELEGATES_H

#include <cstdint>
#include <new>
#include <type_traits>
#include <utility>

#include "VLK/ErrorLog.h"
#include "VLK/Export.h"
#include "VLK/FastDelegate.h"
#include "VLK/ResultCodes.h"
#include "VLK/SyncCounter.h"

namespace VLK::Threading {
class CThreadPool;
}

namespace VLK::Delegates_and_Calls {

/// What a foundation thread or a pool job runs: a counted handle on a heap block that holds the call. Copies share
/// the block. One handle, one thread; the block may be shared across threads, its record may not.
class VLK_API CDelegate {
public:
    /// The block. Count 1 at creation.
    class VLK_API CCbBase : public Threading::CSyncCounter {
    public:
        virtual ~CCbBase();
        /// Makes the call.
        virtual void Call() = 0;
        /// For the block's own use, before a call is repeated; does nothing here.
        virtual void Prepare();

        Exceptions::CErrorLog m_ErrorLog; ///< empty until a call failed whose block keeps its error

    protected:
        CCbBase() noexcept : CSyncCounter(1) {}
    };

    /// Null: calls nothing.
    CDelegate() noexcept : m_pBlock(nullptr) {}
    /// Share the block of the other one, if it has one.
    CDelegate(CDelegate const & other) noexcept;
    CDelegate & operator=(CDelegate const & other) noexcept;
    virtual ~CDelegate();

    /// Calls, and returns URET_OK. What the call raises goes on to the caller; with throwing disabled the result is
    /// URET_Error. Nothing happens without a block.
    unsigned int operator()();
    bool IsValid() const noexcept { return m_pBlock != nullptr; }

    /// The error code in the block's record; 0 without a block or a record.
    unsigned int GetError() const noexcept;
    /// The same; the record, if it has an error, moves to `out`, otherwise `out` becomes empty.
    unsigned int GetError(Exceptions::CErrorLog & out) noexcept;

    /// Gives up the block; who gives up the last reference deletes it.
    void Release() noexcept;

protected:
    /// Raises OutOfMemory, or returns URET_Error.
    static unsigned int FailForMemory();

    CCbBase * m_pBlock;

private:
    friend class Threading::CThreadPool; // calls jobs without the boundary of operator()
};

/// A delegate that makes a call of its own; TDelegate<CCall> binds the functions.
class VLK_API CCall : public CDelegate {
public:
    class VLK_API CCbHead : public CCbBase {
    protected:
        /// Makes the call of a derived block, which has Invoke() for it.
        template <class TBlock>
        void Make(TBlock & block)
        {
            block.Invoke();
        }
    };

    CCall() noexcept = default;

protected:
    /// Gives up the former block and takes over `head` with its count of 1. Returns URET_OK.
    unsigned int Init(CCbHead * head) noexcept;
};

/// Binds a function to a delegate of type TCall (CCall, CWaitableCall). Raises OutOfMemory; with throwing disabled the
/// delegate stays null.
template <class TCall>
class TDelegate : public TCall {
public:
    TDelegate() noexcept = default;

    /// Member function without arguments; its result is dropped. The object must outlive the last call.
    template <class T, class R>
    TDelegate(T * object, R (T::*function)())
    {
        Bind(object, function);
    }
    /// Anything that can be called without arguments; the delegate keeps a copy.
    template <class F>
    requires(std::is_invocable_v<std::decay_t<F> &> &&
             !std::is_base_of_v<CDelegate, std::decay_t<F>>) explicit TDelegate(F && function)
    {
        Make<CFunctionCb<std::decay_t<F>>>(std::forward<F>(function));
    }

    template <class T, class R>
    unsigned int Bind(T * object, R (T::*function)())
    {
        return Make<CCb<T, R>>(object, function);
    }

private:
    template <class T, class R>
    class CCb : public TCall::CCbHead {
    public:
        CCb(T * object, R (T::*function)()) noexcept : m_pObject(object), m_pFunction(function) {}
        void Call() override { this->Make(*this); }
        void Invoke() { static_cast<void>((m_pObject->*m_pFunction)()); }

    private:
        T * m_pObject;
        R (T::*m_pFunction)();
    };

    template <class F>
    class CFunctionCb : public TCall::CCbHead {
    public:
        template <class G>
        explicit CFunctionCb(G && function) : m_Function(std::forward<G>(function))
        {
        }
        void Call() override { this->Make(*this); }
        void Invoke() { static_cast<void>(m_Function()); }

    private:
        F m_Function;
    };

    template <class TBlock, class... TArguments>
    unsigned int Make(TArguments &&... arguments)
    {
        TBlock * const block = new (std::nothrow) TBlock(std::forward<TArguments>(arguments)...);
        return block != nullptr ? this->Init(block) : TCall::FailForMemory();
    }
};

} // namespace VLK::Delegates_and_Calls

#endif
