# Writes the source of a program that several tests share:  cmake -DTESTS=FILE;... -DJOINED=FILE -P join.cmake
# Each test stands in a namespace of its own, so all that they include comes before; the program runs the one that it is
# called by the name of.
foreach(test ${TESTS})
  cmake_path(GET test STEM name)
  file(STRINGS ${test} includes REGEX "^#include ")
  list(FILTER includes EXCLUDE REGEX "\\.moc\"")
  list(APPEND before ${includes})
  string(APPEND namespaces "namespace ${name} {\n#include \"${test}\"\n}\n")
  string(APPEND mains "                      {\"${name}\", ${name}::main},\n")
endforeach()
list(REMOVE_DUPLICATES before)
list(JOIN before "\n" before)
file(WRITE ${JOINED}
     "#include \"support/joined.h\"\n${before}\n\n${namespaces}
int main(int argc, char** argv)
{
    return runJoined({\n${mains}                     },
                     argc, argv);
}
"
)
