# The flags of the library that devices ship. The presets shipped and size build with them, for this
# machine and for 32-bit ARM, and a test checks that Android.bp has the same. Callers that derive
# from the library's classes must build without run-time type information too.
set(ORMEL_SHIPPED_COMPILE_FLAGS
    -Os -ffunction-sections -fdata-sections -fno-rtti -fvisibility-inlines-hidden)
set(ORMEL_SHIPPED_LINK_FLAGS -Wl,--gc-sections -Wl,--icf=safe)

# In an Android tree, Clang and lld need only these flags and "lto: { thin: true }". GCC's objects
# hold machine code too, for links without link-time optimisation.
set(ORMEL_LTO_COMPILE_FLAGS
    $<IF:$<CXX_COMPILER_ID:GNU>,-flto=auto$<SEMICOLON>-ffat-lto-objects,-flto=thin>)
set(ORMEL_LTO_LINK_FLAGS
    $<IF:$<CXX_COMPILER_ID:GNU>,-flto=auto$<SEMICOLON>-fuse-ld=gold,-flto=thin$<SEMICOLON>-fuse-ld=lld>)
