cmake_minimum_required(VERSION 3.25)
# Checks that the libraries' folders include only from the folders below them:
#   cmake -DSOURCE_DIR=<project> -P check_layers.cmake
# Each entry: a folder and the folders its sources may include from.
set(layers
  "common"
  "facet:common"
  "scenefile:common"
  "glctrl:scenefile,facet,common"
  "sceneload:glctrl,scenefile,facet,common"
  "image:common"
  "view:sceneload,glctrl,scenefile,facet,common"
  "form:view,sceneload,glctrl,scenefile,facet,common"
  "viewer:form,view,sceneload,glctrl,scenefile,facet,common"
  "tools:image,form,view,sceneload,glctrl,scenefile,facet,common")

set(violations "")
foreach(entry IN LISTS layers)
  string(REPLACE ":" ";" parts "${entry}")
  list(GET parts 0 folder)
  set(allowed "${folder}")
  list(LENGTH parts n)
  if(n GREATER 1)
    list(GET parts 1 below)
    string(REPLACE "," ";" below "${below}")
    list(APPEND allowed ${below})
  endif()
  file(GLOB_RECURSE sources "${SOURCE_DIR}/${folder}/*.h" "${SOURCE_DIR}/${folder}/*.cpp"
       "${SOURCE_DIR}/${folder}/*.inc")
  foreach(source IN LISTS sources)
    file(STRINGS "${source}" includes REGEX "^#include \"[a-z_]+/")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^#include \"([a-z_]+)/.*" "\\1" used "${line}")
      if(NOT used IN_LIST allowed)
        file(RELATIVE_PATH rel "${SOURCE_DIR}" "${source}")
        string(APPEND violations "  ${rel}: ${line}\n")
      endif()
    endforeach()
  endforeach()
endforeach()

if(violations)
  message(FATAL_ERROR "Includes that run up the layers:\n${violations}")
endif()
