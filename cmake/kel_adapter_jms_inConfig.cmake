# find_package(kel_adapter_jms_in): the target kel::kel_adapter_jms_in_lib, with the data types, the FIX helper and the
# adapter base class. jms/JmsUtils.h also wants the JNI header of a JDK.
include("${CMAKE_CURRENT_LIST_DIR}/KelTargets.cmake")
