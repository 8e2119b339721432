# A copy of RapidJSON with two faults mended, which stands before the installed one. It goes on with a null pointer where
# there is no memory: all that it takes comes by one short class, which gets functions that throw std::bad_alloc. And it
# reads a zero with a large exponent or many decimals as some other number: a zero's leading bits have no count.

set(checked_rapidjson ${PROJECT_BINARY_DIR}/checked_rapidjson)
find_path(rapidjson_headers rapidjson/allocators.h HINTS ${RapidJSON_INCLUDE_DIRS} ${RAPIDJSON_INCLUDE_DIRS} REQUIRED)
file(COPY ${rapidjson_headers}/rapidjson DESTINATION ${checked_rapidjson} REGEX "/rapidjson/(allocators|internal/strtod)\\.h$" EXCLUDE)

file(READ ${rapidjson_headers}/rapidjson/allocators.h allocators)
if(NOT allocators MATCHES "return std::malloc\\(size\\);" OR NOT allocators MATCHES "return std::realloc\\(originalPtr, newSize\\);")
  message(FATAL_ERROR "This version of RapidJSON allocates elsewhere; see cmake/checked_rapidjson.cmake")
endif()
string(REPLACE "return std::malloc(size);" "return Checked(std::malloc(size));" allocators "${allocators}")
string(REPLACE "return std::realloc(originalPtr, newSize);" "return Checked(std::realloc(originalPtr, newSize));"
  allocators "${allocators}")
string(REPLACE "    static void Free(void *ptr) { std::free(ptr); }" "    static void Free(void *ptr) { std::free(ptr); }
    // With the handler that operator new would call.
    static void* Checked(void* memory) {
        if (memory) return memory;
        if (const std::new_handler handler = std::get_new_handler()) handler();
        throw std::bad_alloc();
    }" allocators "${allocators}")
string(REPLACE "#include \"rapidjson.h\"" "#include \"rapidjson.h\"\n#include <new>" allocators "${allocators}")
file(CONFIGURE OUTPUT ${checked_rapidjson}/rapidjson/allocators.h CONTENT "${allocators}" @ONLY)

file(READ ${rapidjson_headers}/rapidjson/internal/strtod.h strtod)
if(NOT strtod MATCHES "    // Trim right-most digits\n")
  message(FATAL_ERROR "This version of RapidJSON reads numbers otherwise; see cmake/checked_rapidjson.cmake")
endif()
string(REPLACE "    // Trim right-most digits\n" "    if (*decimals == '0') return 0.0;\n\n    // Trim right-most digits\n" strtod "${strtod}")
file(CONFIGURE OUTPUT ${checked_rapidjson}/rapidjson/internal/strtod.h CONTENT "${strtod}" @ONLY)

target_include_directories(vornel_flags SYSTEM BEFORE INTERFACE ${checked_rapidjson})
