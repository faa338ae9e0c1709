// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace vantrell {

template <class Signature>
class OwnedCallable;

/// A function object that is owned by one holder and need not be copyable, as std::move_only_function: for standard
/// libraries that lack it (LLVM's). Empty when default-constructed, made from nullptr or moved from; an empty one must
/// not be called.
template <class R, class... Arguments>
class OwnedCallable<R(Arguments...)> {
 public:
  OwnedCallable() noexcept = default;
  OwnedCallable(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): as the standard's

  template <class F>
  requires(!std::is_same_v<std::remove_cvref_t<F>, OwnedCallable> &&
           std::is_invocable_r_v<R, std::decay_t<F>&, Arguments...>)
      OwnedCallable(F&& function)  // NOLINT(google-explicit-constructor): as the standard's
      : target_(std::make_unique<Target<std::decay_t<F>>>(std::forward<F>(function))) {}

  OwnedCallable(OwnedCallable&&) noexcept = default;
  OwnedCallable& operator=(OwnedCallable&&) noexcept = default;

  explicit operator bool() const noexcept { return target_ != nullptr; }

  R operator()(Arguments... arguments) { return target_->call(std::forward<Arguments>(arguments)...); }

 private:
  struct AnyTarget {
    virtual ~AnyTarget() = default;
    virtual R call(Arguments&&... arguments) = 0;
  };

  template <class F>
  struct Target final : AnyTarget {
    template <class G>
    explicit Target(G&& callable) : function(std::forward<G>(callable)) {}
    R call(Arguments&&... arguments) override {
      return std::invoke_r<R>(function, std::forward<Arguments>(arguments)...);
    }
    F function;
  };

  std::unique_ptr<AnyTarget> target_;
};

#ifdef __cpp_lib_move_only_function
template <class Signature>
using UniqueFunction = std::move_only_function<Signature>;
#else
template <class Signature>
using UniqueFunction = OwnedCallable<Signature>;
#endif

}  // namespace vantrell
