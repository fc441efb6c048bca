# Compile flags of all targets, which link this one.
add_library(velmora_flags INTERFACE)

# Disables what Qt deprecates up to 6.9. Qt 6.4 reads the first name, later versions the second.
target_compile_definitions(velmora_flags INTERFACE
    QT_DISABLE_DEPRECATED_BEFORE=0x060900
    QT_DISABLE_DEPRECATED_UP_TO=0x060900
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_FOREACH
    QT_USE_QSTRINGBUILDER
)

# Windows headers would otherwise define macros min and max.
if(WIN32)
    target_compile_definitions(velmora_flags INTERFACE NOMINMAX)
endif()

if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(velmora_flags INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
        -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wnull-dereference -Wextra-semi
        -Wzero-as-null-pointer-constant -Wsuggest-override
        $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond;-Wlogical-op;-Wuseless-cast>
        $<$<BOOL:${VELMORA_WERROR}>:-Werror>
    )
endif()

if(VELMORA_SANITIZE)
    target_compile_options(velmora_flags INTERFACE
        -fsanitize=${VELMORA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(velmora_flags INTERFACE -fsanitize=${VELMORA_SANITIZE})
endif()
