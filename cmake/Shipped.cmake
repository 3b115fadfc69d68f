# The flags of the library that devices ship, all in one place: the presets shipped and size build
# with them, for this machine and for 32-bit ARM, and a test of the suite holds Android.bp to them.
# Callers must do without run-time type information too, if they derive from the library's classes.
set(ORMEL_SHIPPED_COMPILE_FLAGS
    -Os -ffunction-sections -fdata-sections -fno-rtti -fvisibility-inlines-hidden)
set(ORMEL_SHIPPED_LINK_FLAGS -Wl,--gc-sections -Wl,--icf=safe)

# An Android tree's compiler and linker, Clang and lld, need no more than these flags, and
# "lto: { thin: true }". GCC's objects hold machine code as well, for whoever links them otherwise.
set(ORMEL_LTO_COMPILE_FLAGS
    $<IF:$<CXX_COMPILER_ID:GNU>,-flto=auto$<SEMICOLON>-ffat-lto-objects,-flto=thin>)
set(ORMEL_LTO_LINK_FLAGS
    $<IF:$<CXX_COMPILER_ID:GNU>,-flto=auto$<SEMICOLON>-fuse-ld=gold,-flto=thin$<SEMICOLON>-fuse-ld=lld>)
