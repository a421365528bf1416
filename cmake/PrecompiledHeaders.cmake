# Precompiles the standard headers that the component and the hosts include most, once for each set of targets with
# the same compiler options.
set(STREAM_COMMON_HEADERS
  <algorithm> <array> <atomic> <chrono> <condition_variable> <functional> <limits> <map> <memory> <mutex>
  <optional> <span> <string> <string_view> <vector>)

get_property(folder_targets GLOBAL PROPERTY STREAM_FOLDER_TARGETS)
list(REMOVE_ITEM folder_targets stream_platform)
foreach(target IN LISTS folder_targets)
  target_precompile_headers(${target} REUSE_FROM stream_platform)
endforeach()
foreach(target stream_platform stream_host_shared stream_player_core)
  if(TARGET ${target})
    target_precompile_headers(${target} PRIVATE ${STREAM_COMMON_HEADERS})
  endif()
endforeach()
foreach(target stream_host_core stream_report stream_player_parts)
  if(TARGET ${target})
    target_precompile_headers(${target} REUSE_FROM stream_host_shared)
  endif()
endforeach()
