// Drives the npm "onvif" client for the ONVIF tests, one step at a time.
// Arguments: the client's node_modules folder, then the server's port, the
// user and the password. Each line on stdin is a step as JSON:
//   {"op": "connect"}                      connects as a video system does
//   {"op": "call", "method": "absoluteMove", "options": {...}}
// and each step is answered with one line on stdout:
//   {"op": ..., "ok": true|false, "error": "...", "result": ...}
'use strict';

const path = require('path');
const readline = require('readline');

const [modules, port, username, password] = process.argv.slice(2);
const { Cam } = require(path.join(modules, 'onvif'));

let cam = null;

function answer(step, err, result) {
    const line = { op: step.method || step.op, ok: !err };
    if (err) {
        line.error = String(err.message || err);
    } else if (result !== undefined) {
        line.result = result;
    }
    process.stdout.write(JSON.stringify(line) + '\n');
}

function run(step, done) {
    if (step.op === 'connect') {
        cam = new Cam({
            hostname: '127.0.0.1',
            port: Number(port),
            username,
            password: step.password === undefined ? password : step.password,
            timeout: 5000,
            autoconnect: false,
        });
        cam.connect((err) => {
            done(err, err ? undefined : {
                profiles: (cam.profiles || []).map((p) => p.$.token),
                activeSource: cam.activeSource ? cam.activeSource.profileToken : null,
                services: Object.keys(cam.uri || {}).sort(),
            });
        });
        return;
    }
    if (step.op === 'call') {
        const method = cam && cam[step.method];
        if (typeof method !== 'function') {
            done(new Error('no such method ' + step.method));
            return;
        }
        const callback = (err, result) => done(err, result === undefined ? null : result);
        if (step.options === undefined) {
            method.call(cam, callback);
        } else {
            method.call(cam, step.options, callback);
        }
        return;
    }
    done(new Error('unknown step ' + step.op));
}

const input = readline.createInterface({ input: process.stdin });
input.on('line', (line) => {
    let step;
    try {
        step = JSON.parse(line);
    } catch (err) {
        answer({ op: 'parse' }, err);
        return;
    }
    run(step, (err, result) => answer(step, err, result));
});
input.on('close', () => process.exit(0));
