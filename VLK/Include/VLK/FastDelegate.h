#ifndef VLK_FAST_DELEGATE_H
#define VLK_FAST_DELEGATE_H

#include <type_traits>

namespace VLK::Delegates_and_Calls {

/// A small, copyable, uncounted callback without arguments: an object and a member function of it, or a plain
/// function. The object must outlive the last call. Calling an unbound one does nothing and returns R{}.
/// One object, one thread.
template <class R>
class TFastDelegateR {
public:
    using Function = R (*)();

    constexpr TFastDelegateR() noexcept = default;
    constexpr TFastDelegateR(Function function) noexcept { Bind(function); }

    /// A delegate for the member function: TFastDelegateR<R>::Of<&CEvent::Set>(event).
    template <auto Member, class T>
    static TFastDelegateR Of(T & object) noexcept
    {
        TFastDelegateR made;
        made.template Bind<Member>(object);
        return made;
    }

    /// Binds a member function without arguments.
    template <auto Member, class T>
    void Bind(T & object) noexcept
    {
        m_Closure.object.pointer = &object;
        m_Closure.invoke = [](ClosureWord word) -> R {
            return static_cast<R>((static_cast<T *>(word.pointer)->*Member)());
        };
    }
    /// Binds a plain function; null unbinds.
    constexpr void Bind(Function function) noexcept
    {
        m_Closure.object.function = function;
        m_Closure.invoke = function != nullptr ? &InvokeStaticFunction : nullptr;
    }

    R operator()() const
    {
        if (m_Closure.invoke == nullptr) return R();
        return m_Closure.invoke(m_Closure.object);
    }

    /// The same object, or plain function, and the same member.
    bool operator==(TFastDelegateR const & other) const noexcept
    {
        if (m_Closure.invoke != other.m_Closure.invoke) return false;
        if (m_Closure.invoke == nullptr) return true;
        if (m_Closure.invoke == &InvokeStaticFunction)
            return m_Closure.object.function == other.m_Closure.object.function;
        return m_Closure.object.pointer == other.m_Closure.object.pointer;
    }
    bool operator!=(TFastDelegateR const & other) const noexcept { return !(*this == other); }

private:
    union ClosureWord {
        void * pointer;
        Function function;
    };
    /// The object, or the plain function itself in the object's word, and what to call.
    struct ClosurePtr {
        ClosureWord object{nullptr};
        R (*invoke)(ClosureWord) = nullptr;
    };
    static R InvokeStaticFunction(ClosureWord word) { return word.function(); }

    ClosurePtr m_Closure;
};

/// The same without a result.
using CFastDelegate = TFastDelegateR<void>;

} // namespace VLK::Delegates_and_Calls

#endif
