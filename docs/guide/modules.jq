# SPDX-License-Identifier: GPL-2.0-or-later
# A line for each port from "show transceiver json":  diagsh -c "show transceiver json" | jq -rf docs/guide/modules.jq
#
# Readings are texts; "" is none, "-inf" no light, and what calibration makes of nonsense may be "nan".  The limits are those
# of a commercial module (SFF-8472 leaves them to its maker): 0 to 70 degrees, 3.3 volts within five percent.
def bad($name; $low; $high):
  if . == "" then empty
  elif test("inf|nan") then "\($name) \(.)"
  elif tonumber < $low or tonumber > $high then "\($name) \(.)"
  else empty end;

# Of one path: "" of a GPON or Ethernet path, "xg" of an XG-PON path.  Every lane that has a value counts.
def troubles($of; $temperature; $voltage; $tx; $rx):
  (.[$temperature] | bad("temperature"; 0; 70)),
  (.[$voltage] | bad("voltage"; 3.135; 3.465)),
  (to_entries[] | select(.key | startswith($tx)) | .value | bad("TX power"; -12; 9)),
  (to_entries[] | select(.key | startswith($rx)) | .value | bad("RX power"; -28; 5))
  | $of + .;

to_entries[] | .key as $port | .value[0]
| if .temperature == "" and .xgTemperature == "" then
    if .vendorName == "" then "no module that can be read" else "no diagnostics" end
  else
    [troubles(""; "temperature"; "voltage"; "transmitPower"; "receivePower"),
     troubles("XG "; "xgTemperature"; "xgVoltage"; "xgTransmitPower"; "xgReceivePower")]
    | if . == [] then "all right" else join(", ") end
  end
| "\($port): \(.)"
