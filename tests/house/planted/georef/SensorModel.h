// georef/SensorModel.h
