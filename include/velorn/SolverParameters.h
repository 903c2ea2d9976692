// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The parameter model of an adjustment: the time sections of all strips and the vector of unknowns.
//
//     Velorn::SolverParameters parameters(strips, configuration);
//     const std::string fault = parameters.setSections(
//         configuration.TypeModel, configuration.DefaultInterval, leverArm, misalignment,
//         configuration.FileSuffix, configuration.OverwriteToLinear,
//         configuration.OverwriteToSpline);
//
// With N sections the vector has 24 N + 12 entries: per section 12 corrections of the trajectory's
// position and 12 of its angles (entry 4 j + m multiplies dt^m of component j, dt the seconds since
// the start of the section), then 3 offsets and 3 scale deviations of range and angles, 3
// misalignment angles [rad] and the lever arm [length unit of the points].
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include <velorn/InputParameter.h>
#include <velorn/Section.h>
#include <velorn/Visibility.h>

namespace Velorn {

/// Sections and unknowns. They are made by one of setSections, setEmptySections (through
/// readSectionsAndParameter) and restore, before anything else; reading operations may then be
/// called from several threads. Operations that return a text return an empty one on success.
class VELORN_EXPORT SolverParameters {
 public:
  SolverParameters() = default;

  /// @param strips     container files; a strip is known by its place in this list
  /// @param parameter  copied
  SolverParameters(const std::vector<std::filesystem::path>& strips,
                   const InputParameter& parameter);

  /// Divides every strip, from its first to its last GPS time, into equal sections no longer than
  /// the interval of its model; sizes the vector of unknowns; saves the section file; sets lever
  /// arm and misalignment. Of a strip only the range of its GPS times is read. Called once: a
  /// second call goes on with the section numbers and lays the new vector over the old one, whose
  /// global entries thereby become entries of sections.
  ///
  /// The first and the last section of a strip are never SPLINE but LINEAR. Starts are accumulated:
  /// each is the one before plus the length of a section, rounded.
  /// @param secType          name of the model: BIAS, LINEAR, SPLINE or HYBRID
  /// @param intervals        not read: the configuration's DefaultInterval counts [s]
  /// @param leverArm         [length unit of the points]
  /// @param misalignment     [degree]
  /// @param sectionFileName  end of the section file's name; empty: no file. See saveSectionFile.
  /// @param toLinear         strips that get linear sections: strip to longest section [s]
  /// @param toSpline         strips that get spline sections, over toLinear. Under HYBRID both
  ///                         change the interval only; strips beyond the list mean nothing.
  /// @return empty, or the first fault. Strips before it stay divided; the vector is as before.
  std::string setSections(const std::string& secType, const std::vector<double>& intervals,
                          const Geomra::PhysicalSpace::point& leverArm,
                          const Geomra::PhysicalSpace::point& misalignment,
                          const std::string& sectionFileName, const std::map<int, double>& toLinear,
                          const std::map<int, double>& toSpline);

  /// Gives each strip one LINEAR section from time 0 on, without reading it or writing a file.
  /// @param misalignment  [degree]
  std::string setEmptySections(const Geomra::PhysicalSpace::point& leverArm,
                               const Geomra::PhysicalSpace::point& misalignment);

  /// With both names empty: setEmptySections. With a name it ENDS THE PROCESS with exit status 1,
  /// after a message on the console; restore is the operation that reads the files.
  std::string readSectionsAndParameter(const std::string& sectionFileName,
                                       const std::string& parameterFileName,
                                       const Geomra::PhysicalSpace::point& leverArm,
                                       const Geomra::PhysicalSpace::point& misalignment);

  /// Reads sections and unknowns back from the files that an earlier run wrote, whose strips are
  /// matched with those of this object by file name; sections are numbered in the order of this
  /// object's strips. docs/parameter-files.md says what the files
  /// hold and what is checked. Where the companion of writeExactParameters lies beside the
  /// parameter file the unknowns are exact, otherwise those of the text with its 15 decimals.
  /// intervalTime, minTime and maxTime of the strips are in no file: they stay as a division has
  /// made them, or get their defaults.
  /// @param unknownStrips  not null: strips of this object that the strip id file does not name are
  ///         taken too and listed here. Each gets one LINEAR section from time 0 on whose
  ///         corrections are zero, so that the global ones alone act on it.
  /// @return empty, or "SolverParameters::restore: <file>: line <n>: <fault>"; this object and the
  ///         list are then as before
  std::string restore(const std::filesystem::path& sectionFile,
                      const std::filesystem::path& parameterFile,
                      const std::filesystem::path& stripIdFile,
                      std::vector<std::filesystem::path>* unknownStrips = nullptr);

  /// The section with the greatest start that is not after `t`; beyond the strip's last time its
  /// last section.
  /// @param t  [GPS seconds]
  /// @return the default Section, after a message on the console, for a strip beyond the list, a
  ///         time before the strip's first start, or NaN
  Section getSectionInStrip(unsigned int stripIndex, double t) const;

  /// The same section, with its end; empty, without a message, where there is none.
  std::optional<SectionSpan> findSection(unsigned int stripIndex, double t) const;

  /// The strips in the order of the list, each with its sections; empty before the division.
  const std::vector<StripSections>& getStripSections() const { return newsections; }

  /// Sections made so far.
  std::uint32_t numberOfSectionsForAllStrips() const { return numberOfSections; }

  /// Corrections of one section.
  /// @throws std::out_of_range beyond the vector
  /// @{
  double getTrajectoryPositionCorrection(unsigned int section, unsigned int component) const;
  double getTrajectoryAngleCorrection(unsigned int section, unsigned int component) const;
  /// @}

  /// Corrections of the scanner's range and two angles: [length unit], [rad], [rad]; a scale is the
  /// deviation from one.
  /// @throws std::out_of_range beyond the vector, so for every component before there are sections
  /// @{
  double getRangeAngleOffset(unsigned int component) const;
  double getRangeAngleScale(unsigned int component) const;
  /// @}

  /// Misalignment [rad] and lever arm [length unit of the points]; 0 before there are sections.
  /// @throws std::out_of_range beyond the vector
  /// @{
  double getMisalignment(unsigned int component) const;
  double getLeverArm(unsigned int component) const;
  /// @}

  std::size_t getNumberOfParameters() const { return parameters.size(); }

  /// @throws std::out_of_range, naming the operation, when the vector lacks the entries
  /// @{
  void setLocalParmetersToZero(unsigned int& section);  ///< the 24 unknowns of a section
  void setLeverArm(double x, double y, double z);       ///< [length unit of the points]
  void setMisalignment(double x, double y, double z);   ///< [degree]; held in radians
  /// @}

  /// Both of the above.
  /// @param misalignment  [degree]
  /// @return empty, or which value is not finite; nothing is set then
  /// @throws std::out_of_range as the two
  std::string setLeverarmAndMisalignment(const Geomra::PhysicalSpace::point& leverArm,
                                         const Geomra::PhysicalSpace::point& misalignment);

  /// Writes "Sections<name>" or "Parameter<name>" into the parameter folder of the configuration,
  /// which must exist; docs/parameter-files.md shows both. An empty name writes nothing, and
  /// nothing happens when the file cannot be opened. One that does not take the text (a full disk),
  /// and a vector that does not exist yet, are told on the console.
  /// @{
  void writeSectionFile(const std::string& name) const;
  void writeParameterFile(const std::string& name) const;
  /// @}

  /// The same, but the folder is made when it is missing, and a file that cannot be opened is told
  /// on the console.
  /// @{
  void saveSectionFile(const std::string& name) const;
  void saveParameterFile(const std::string& name) const;
  /// @}

  /// Writes the unknowns bit by bit to `parameterFile` + ".exact", which restore reads beside the
  /// parameter file: 15 decimals of an angle's cubic coefficient leave up to 1.4 cm at a range of
  /// 600 m after an hour.
  /// @return empty, or "SolverParameters::writeExactParameters: <fault>"; a file that was there
  ///         before is then as it was
  std::string writeExactParameters(const std::filesystem::path& parameterFile) const;

 private:
  // The one place where pointers to unknowns are made, for the solver.
  friend std::vector<double*> parameterBlocks(SolverParameters& parameters,
                                              const std::vector<Section>& sections);

  std::string divideStrip(std::size_t stripIndex, const std::string& secType,
                          const std::map<int, double>& toLinear,
                          const std::map<int, double>& toSpline);
  void resizeParameters();
  std::filesystem::path fileInParameterFolder(const std::string& name) const;

  std::vector<std::filesystem::path> stripFiles;
  InputParameter inputParameter;
  std::vector<StripSections> newsections;  // one per strip
  std::vector<double> parameters;
  std::uint32_t numberOfSections = 0;
};

}  // namespace Velorn
