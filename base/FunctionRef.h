// SPDX-FileCopyrightText: The Sorakaze developers
// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace sorakaze {

template <typename Signature>
class FunctionRef;

/// Refers to a callable that outlives it; never owns or allocates. For conditions on the waiting thread's
/// stack.
template <typename Result, typename... Arguments>
class FunctionRef<Result(Arguments...)> {
  public:
    template <typename Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionRef>) FunctionRef(Callable&& callable)
        : object_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
          call_([](void* object, Arguments... arguments) -> Result {
              return (*static_cast<std::remove_reference_t<Callable>*>(object))(
                  std::forward<Arguments>(arguments)...);
          }) {}

    Result operator()(Arguments... arguments) const {
        return call_(object_, std::forward<Arguments>(arguments)...);
    }

  private:
    void* object_;
    Result (*call_)(void*, Arguments...);
};

}  // namespace sorakaze
