// The part of fmt that is no template, compiled here once. With its headers alone each file that
// formats would compile all of it, which took longer than the file itself.
#ifndef FMT_HEADER_ONLY
#include <fmt/format-inl.h>

// The headers promise the compiler that these are compiled somewhere.
FMT_BEGIN_NAMESPACE
namespace detail {
template auto thousands_sep_impl(locale_ref) -> thousands_sep_result<char>;
template auto decimal_point_impl(locale_ref) -> char;
#if FMT_VERSION >= 100000 && FMT_VERSION < 120000
template void vformat_to(buffer<char>&, string_view, typename vformat_args<>::type, locale_ref);
#endif
}  // namespace detail
FMT_END_NAMESPACE
#endif
