# One interface target carries every compile flag; all of our targets link it.
add_library(velmora_flags INTERFACE)

target_compile_definitions(velmora_flags INTERFACE
    QT_DISABLE_DEPRECATED_BEFORE=0x060400
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_FOREACH
    QT_USE_QSTRINGBUILDER
)

target_compile_options(velmora_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual -Wnull-dereference -Wextra-semi
    -Wzero-as-null-pointer-constant
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond;-Wlogical-op;-Wuseless-cast;-Wsuggest-override>
    $<$<BOOL:${VELMORA_WERROR}>:-Werror>
)

if(VELMORA_SANITIZE)
    target_compile_options(velmora_flags INTERFACE
        -fsanitize=${VELMORA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(velmora_flags INTERFACE -fsanitize=${VELMORA_SANITIZE})
endif()
