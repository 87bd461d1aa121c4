# The library's modules: one folder under src/ each, one static library lorvane_<name> each, with
# the modules it uses declared. The umbrella `lorvane` is made of their objects and is the one thing
# a user links; the module targets give the build its structure and each module's tests their
# link line.
#
# What a module's sources can see:
#   - public headers, "lorvane/<module>/X.h", of itself and of the modules it declares;
#   - its own private headers, "<name>/X.h" (src/<name>/);
#   - the internal headers of the modules it declares, "<module>/internal/X.h" (src/<module>/internal/).
# Private and internal headers are reached through links in the build tree, so that no module has
# the whole of src/ on its include path.

# The module order: a module may declare only modules before it.
set(LORVANE_MODULE_ORDER platform core classes types xmlutils json sax dom xpath serializer schema)

# lorvane_add_module(<name> [DEPS <module>...] [LIBS <target>...])
#   DEPS  the modules whose headers the sources include (what they include of further modules must
#         come through these)
#   LIBS  outside libraries the module's own sources use (the platform layer's services)
function(lorvane_add_module name)
  cmake_parse_arguments(M "" "" "DEPS;LIBS" ${ARGN})
  list(FIND LORVANE_MODULE_ORDER ${name} position)
  if(position EQUAL -1)
    message(FATAL_ERROR "Module ${name} is not in LORVANE_MODULE_ORDER")
  endif()
  foreach(dep ${M_DEPS})
    list(FIND LORVANE_MODULE_ORDER ${dep} dep_position)
    if(dep_position EQUAL -1 OR NOT dep_position LESS position)
      message(FATAL_ERROR "Module ${name} may not use ${dep}: it comes later in the module order")
    endif()
    if(NOT TARGET lorvane_${dep})
      message(FATAL_ERROR "Module ${name} uses ${dep}, which must be added before it")
    endif()
  endforeach()

  set(dir ${PROJECT_SOURCE_DIR}/src/${name})
  set(stage ${PROJECT_BINARY_DIR}/module-headers/${name})
  file(GLOB sources CONFIGURE_DEPENDS ${dir}/*.cpp)
  add_library(lorvane_${name} STATIC ${sources})
  target_compile_features(lorvane_${name} PUBLIC cxx_std_20)
  set_target_properties(lorvane_${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_include_directories(lorvane_${name}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    PRIVATE ${stage}/private)
  lorvane_link_folder(${dir} ${stage}/private/${name})
  if(IS_DIRECTORY ${dir}/internal)
    lorvane_link_folder(${dir}/internal ${stage}/internal/${name}/internal)
    target_include_directories(lorvane_${name} PUBLIC $<BUILD_INTERFACE:${stage}/internal>)
  endif()
  foreach(dep ${M_DEPS})
    target_link_libraries(lorvane_${name} PUBLIC lorvane_${dep})
  endforeach()
  target_link_libraries(lorvane_${name} PRIVATE lorvane-dev-flags ${M_LIBS})

  # What the include check and the umbrella need to know of the module.
  set(closure ${M_DEPS})
  foreach(dep ${M_DEPS})
    get_property(dep_closure GLOBAL PROPERTY LORVANE_MODULE_USES_${dep})
    list(APPEND closure ${dep_closure})
  endforeach()
  list(REMOVE_DUPLICATES closure)
  set_property(GLOBAL PROPERTY LORVANE_MODULE_USES_${name} ${closure})
  set_property(GLOBAL APPEND PROPERTY LORVANE_MODULES ${name})
endfunction()

# A symbolic link from the build tree to a source folder, made once at configure time.
function(lorvane_link_folder target link)
  get_filename_component(parent ${link} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  if(NOT IS_SYMLINK ${link})
    file(CREATE_LINK ${target} ${link} SYMBOLIC)
  endif()
endfunction()

# Writes what each module may include, for the include check of the tests.
function(lorvane_write_module_uses file)
  get_property(modules GLOBAL PROPERTY LORVANE_MODULES)
  set(content "set(LORVANE_MODULES ${modules})\n")
  foreach(m ${modules})
    get_property(uses GLOBAL PROPERTY LORVANE_MODULE_USES_${m})
    string(APPEND content "set(LORVANE_USES_${m} ${uses})\n")
  endforeach()
  file(CONFIGURE OUTPUT ${file} CONTENT "${content}")
endfunction()
