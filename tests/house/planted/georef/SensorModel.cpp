// georef/SensorModel.cpp
