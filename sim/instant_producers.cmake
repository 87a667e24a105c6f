# Writes a copy of each producer file of SOURCE_DIR into OUTPUT_DIR with
# "instantFrames": true on every camera: the same cameras, reading each frame
# out at its trigger, for tests and benchmarks that need speed.
# Usage: cmake -DSOURCE_DIR=... -DOUTPUT_DIR=... -P instant_producers.cmake
file(GLOB producers "${SOURCE_DIR}/*.cti")
file(MAKE_DIRECTORY "${OUTPUT_DIR}")
foreach(producer ${producers})
  file(READ "${producer}" document)
  string(JSON interfaces LENGTH "${document}" system interfaces)
  math(EXPR lastInterface "${interfaces} - 1")
  foreach(i RANGE ${lastInterface})
    string(JSON cameras LENGTH "${document}" system interfaces ${i} cameras)
    if(cameras EQUAL 0)
      continue()
    endif()
    math(EXPR lastCamera "${cameras} - 1")
    foreach(c RANGE ${lastCamera})
      string(JSON document SET "${document}" system interfaces ${i} cameras ${c} instantFrames true)
    endforeach()
  endforeach()
  get_filename_component(name "${producer}" NAME)
  file(WRITE "${OUTPUT_DIR}/${name}.new" "${document}\n")
  # Rewritten only when changed, so a running test never reads half a file.
  file(COPY_FILE "${OUTPUT_DIR}/${name}.new" "${OUTPUT_DIR}/${name}" ONLY_IF_DIFFERENT)
  file(REMOVE "${OUTPUT_DIR}/${name}.new")
endforeach()
