// node validate_glb.js FILE...: checks .glb files with the Khronos validator. Prints errors and warnings;
// the exit status is 1 if there are any.
const fs = require('fs');
const validator = require('gltf-validator');

async function main() {
  for (const file of process.argv.slice(2)) {
    const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {maxIssues: 20});
    for (const message of report.issues.messages.filter((message) => message.severity < 2)) {
      console.log(`${file}: ${message.code} ${message.message} ${message.pointer}`);
      process.exitCode = 1;
    }
  }
}

main();
